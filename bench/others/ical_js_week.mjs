// Finds the events of a week with ical.js, from the start of the process. Prints how many.
// Usage: ical_js_week.mjs PACKAGE ROOT, where PACKAGE is the folder that ical.js is installed in.

import { readdirSync, readFileSync } from 'node:fs'
import { createRequire } from 'node:module'
import { join } from 'node:path'

const [packageFolder, root] = process.argv.slice(2)
const module = createRequire(import.meta.url)(packageFolder)
const ICAL = module.default ?? module
const from = ICAL.Time.fromString('2025-06-09T00:00:00Z')
const to = ICAL.Time.fromString('2025-06-16T00:00:00Z')

function occursWithin (start, end) {
  return start.compare(to) < 0 && end.compare(from) > 0
}

function countOccurrences (event) {
  if (!event.isRecurring()) return occursWithin(event.startDate, event.endDate) ? 1 : 0
  let count = 0
  const occurrences = event.iterator()
  for (let next; (next = occurrences.next()) && next.compare(to) < 0;) {
    const details = event.getOccurrenceDetails(next)
    if (occursWithin(details.startDate, details.endDate)) ++count
  }
  return count
}

let count = 0
for (const entry of readdirSync(root, { recursive: true })) {
  if (!entry.endsWith('.ics')) continue
  const calendar = new ICAL.Component(ICAL.parse(readFileSync(join(root, entry), 'utf8')))
  for (const zone of calendar.getAllSubcomponents('vtimezone')) ICAL.TimezoneService.register(zone)
  const events = calendar.getAllSubcomponents('vevent').map(event => new ICAL.Event(event))
  for (const event of events) if (!event.isRecurrenceException()) count += countOccurrences(event)
}
console.log(count)
