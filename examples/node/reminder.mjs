#!/usr/bin/env node
// Creates a reminder in a scratch copy of the sample calendars, completes it, and shows what the bridge answers.
// An example of a host that writes; your own reminders are not touched. Usage: reminder.mjs [BRIDGE]

import { Bridge, Refused } from './bridge.mjs'
import { program, withSampleCalendars } from './samples.mjs'

function show (reminder) {
  const due = reminder.hasDueTime ? reminder.dueDate : `the day that begins at ${reminder.dueDate}`
  console.log(`[${reminder.isCompleted ? 'x' : ' '}] ${reminder.title}, ${reminder.list}, due ${due}`)
}

await withSampleCalendars(async environment => {
  const bridge = await Bridge.start(program, { environment })
  const { lists } = await bridge.ask('reminder-lists')
  const { reminder } = await bridge.ask('reminder-create', {
    title: 'Order cake', listId: lists.find(list => list.writable).id, dueDate: '2026-03-27', hasDueTime: false
  })
  show(reminder)
  show((await bridge.ask('reminder-complete', { reminderId: reminder.id })).reminder)
  try {
    await bridge.ask('reminder-complete', { reminderId: 'no such reminder' })
  } catch (error) {
    if (!(error instanceof Refused)) throw error
    console.log(`refused: ${error.message}`)
  }
  await bridge.close()
})
