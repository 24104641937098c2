#!/usr/bin/env node
// Prints one week of the sample calendars. An example of a host that reads; bridge.mjs is its client.
// Usage: agenda.mjs [BRIDGE]

import { Bridge } from './bridge.mjs'
import { program, timeZone, withSampleCalendars } from './samples.mjs'

// A host leaves timeZone out: its own is the bridge's.
const day = new Intl.DateTimeFormat('en-GB', { weekday: 'long', day: 'numeric', month: 'long', year: 'numeric', timeZone })
const time = new Intl.DateTimeFormat('en-GB', { hour: '2-digit', minute: '2-digit', timeZone })

function printWeek (events) {
  let heading
  for (const event of events) { // sorted by start already
    // All-day events begin at local midnight: the day is right in local time alone, which the formats show.
    const start = new Date(event.start)
    if (heading !== day.format(start)) console.log(`\n${heading = day.format(start)}`)
    const hours = event.isAllDay ? 'all day' : `${time.format(start)}–${time.format(new Date(event.end))}`
    console.log(`  ${hours.padEnd(13)}${event.title}  (${event.calendar})`)
  }
}

await withSampleCalendars(async environment => {
  const bridge = await Bridge.start(program, { environment })
  const { calendars } = await bridge.ask('calendars')
  console.log(calendars.map(calendar => calendar.title).join(', '))
  // Requests need not wait for each other: answers are matched by id.
  const week = { from: '2026-03-23', to: '2026-03-30' }
  const [{ events }, { reminders }] = await Promise.all([bridge.ask('events', week), bridge.ask('reminders', week)])
  printWeek(events)
  console.log(`\n${reminders.filter(reminder => !reminder.isCompleted).length} reminders due`)
  await bridge.close()
})
