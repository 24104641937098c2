#!/usr/bin/env node
// Prints the coming days of your own calendars, and prints them anew whenever something changed. It changes nothing.
// A change line says that something changed, not what, so a host asks again. Usage: watch.mjs [BRIDGE [ARGUMENT...]]

import { setTimeout as pause } from 'node:timers/promises'
import { Bridge, Ended, Refused } from './bridge.mjs'
import { program, programArguments } from './samples.mjs'

const days = 7
const dayAndTime = new Intl.DateTimeFormat('en-GB', {
  weekday: 'short', day: '2-digit', month: 'short', hour: '2-digit', minute: '2-digit'
})
const dayAlone = new Intl.DateTimeFormat('en-GB', { weekday: 'short', day: '2-digit', month: 'short' })

// A day of the local calendar, as the bridge reads it.
function dayFromToday (count) {
  const date = new Date()
  date.setDate(date.getDate() + count)
  const digits = number => String(number).padStart(2, '0')
  return `${date.getFullYear()}-${digits(date.getMonth() + 1)}-${digits(date.getDate())}`
}

async function printDays (bridge) {
  const { events } = await bridge.ask('events', { from: dayFromToday(0), to: dayFromToday(days) })
  console.log(`${events.length} events in ${days} days`)
  for (const event of events) {
    console.log(`  ${(event.isAllDay ? dayAlone : dayAndTime).format(new Date(event.start))}  ${event.title}`)
  }
}

const bridge = await Bridge.start(program, { arguments: programArguments })
let refreshing = Promise.resolve()
let isDue = false

// A sync brings many changes: let it go on for a moment, and ask once for all of them. What comes meanwhile asks again.
function refresh () {
  if (isDue) return
  isDue = true
  refreshing = refreshing.then(() => pause(200)).then(() => {
    isDue = false
    return printDays(bridge)
  }).catch(error => {
    if (error instanceof Refused) console.log(error.message)
    else if (!(error instanceof Ended)) throw error
    bridge.close()
  })
}

bridge.on('changed', refresh)
bridge.on('end', end => console.log(end.message))
process.on('SIGINT', () => bridge.close())
if (bridge.status === 'notDetermined') await bridge.ask('auth', {}, { timeout: Infinity }) // as long as the user takes
refresh()
