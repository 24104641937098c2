// Compiled, not run: what the types have to accept, and what they have to refuse.
import { Bridge, Refused } from '../../examples/node/bridge.mjs'

export async function accepted (): Promise<string> {
  const bridge = await Bridge.start('tidemark-cal', { environment: { TIDEMARK_DESKTOP: '1' }, timeout: 1000 })
  bridge.on('changed', () => {})
  const { events } = await bridge.ask('events', { from: '2026-03-23', to: '2026-03-30' })
  await bridge.ask('auth', {}, { timeout: Infinity })
  await bridge.ask('reminder-update', { reminderId: 'r', notes: null })
  const { calendars } = await bridge.ask('calendars')
  const status: number | null = await bridge.close()
  if (calendars[0]?.sourceType === 'caldav' && bridge.status !== 'writeOnly') throw new Refused(String(status))
  return events[0]!.url ?? events[0]!.title
}

export async function refused (bridge: Bridge): Promise<void> {
  // @ts-expect-error: no such command
  await bridge.ask('Status')
  // @ts-expect-error: without an end
  await bridge.ask('events', { from: '2026-03-23' })
  // @ts-expect-error: no such field
  await bridge.ask('create', { start: '2026-03-23', name: 'Lunch' })
  // @ts-expect-error: no number
  await bridge.ask('update', { eventId: 42 })
  const { events } = await bridge.ask('events', { from: '2026-03-23', to: '2026-03-30' })
  // @ts-expect-error: not every event has an address
  events[0]!.url.length
  // @ts-expect-error: a status is one of six
  if (bridge.status === 'granted') return
  // @ts-expect-error: no such notice
  bridge.on('change', () => {})
}
