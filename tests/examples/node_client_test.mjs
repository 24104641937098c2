// The client for Node against the simulator and against bridges that go wrong. Usage: node_client_test.mjs SIMULATOR

import assert from 'node:assert/strict'
import { once } from 'node:events'
import { readFile } from 'node:fs/promises'
import test from 'node:test'
import { fileURLToPath } from 'node:url'
import * as client from '../../examples/node/bridge.mjs'

const { Bridge, Ended, Refused, TimedOut } = client

const office = fileURLToPath(new URL('../transcripts/scenarios/office.json', import.meta.url))
const oddBridge = fileURLToPath(new URL('odd_bridge.py', import.meta.url))
const start = '2025-03-03T10:00:00Z'
const short = { timeout: 300 } // for answers that never come

const simulator = () => Bridge.start(process.argv[2], { arguments: [office] })
const odd = (kind, options) => Bridge.start('python3', { arguments: [oddBridge, kind], ...options })

test('asks and ends', async () => {
  const bridge = await simulator()
  assert.equal(bridge.status, 'fullAccess')
  assert.ok((await bridge.ask('calendars')).calendars.length > 0)
  await assert.rejects(bridge.ask('events'), new Refused('events needs `from` and `to`'))
  assert.equal(await bridge.close(), 0)
  assert.equal(await bridge.close(), 0)
})

test('text with every line separator comes back whole', async () => {
  const bridge = await simulator()
  const title = 'a\u2028b\u2029c\u0085d\x0be\x0cf\r\ng\x1ch'
  assert.equal((await bridge.ask('create', { start, title })).event.title, title)
  await bridge.close()
})

test('lines may be long, and end in a character', async () => {
  const bridge = await simulator()
  const notes = 'x' + 'é€😀'.repeat(200_000)
  assert.equal((await bridge.ask('create', { start, notes })).event.notes, notes)
  await bridge.close()
})

test('refuses what no line can hold', async () => {
  const bridge = await simulator()
  for (const title of ['\ud83d', 'x\ude00', '\ude00\ud83d', NaN]) {
    await assert.rejects(bridge.ask('create', { start, title }), TypeError)
  }
  assert.equal((await bridge.ask('create', { start, title: '😀' })).event.title, '😀')
  await bridge.close()
})

test('many requests at once', async () => {
  const bridge = await simulator()
  const notes = 'x'.repeat(100_000)
  const numbers = [...Array(200).keys()].map(String)
  const answers = await Promise.all(numbers.map(title => bridge.ask('create', { start, title, notes })))
  assert.deepEqual(answers.map(answer => answer.event.title), numbers)
  assert.equal(bridge.bufferedLength, 0)
  await bridge.close()
})

test('tells of changes', async () => {
  const bridge = await simulator()
  const changed = once(bridge, 'changed')
  await bridge.ask('create', { start })
  await changed
  await bridge.close()
})

test('answers are matched by id', async () => {
  const bridge = await odd('backwards')
  const answers = await Promise.all([bridge.ask('calendars'), bridge.ask('events')])
  assert.deepEqual(answers.map(answer => answer.cmd), ['calendars', 'events'])
  await bridge.close()
})

test('an answer that never comes', async () => {
  const bridge = await odd('forgetful')
  await assert.rejects(bridge.ask('status', {}, short), new TimedOut('the answer to status did not come within 300 ms'))
  // The first answer comes now, too late, and is not taken for the second one.
  assert.equal((await bridge.ask('status')).status, 'denied')
  await bridge.close()
})

test('a bridge that is never ready', async () => {
  await assert.rejects(odd('mute', short), new TimedOut('the ready line did not come within 300 ms'))
})

test('a bridge that is not there', async () => {
  await assert.rejects(Bridge.start('/no/such/program'), Ended)
})

test('a bridge that ends', async () => {
  for (const kind of ['ends', 'ends_in_a_line']) {
    const bridge = await odd(kind)
    let ends = 0
    bridge.on('end', () => ++ends)
    await assert.rejects(bridge.ask('status'), new Ended('the bridge has ended with status 0'))
    await assert.rejects(bridge.ask('status'), Ended)
    assert.equal(await bridge.close(), 0)
    assert.equal(ends, 1)
  }
})

test('a bridge that reads nothing', async () => {
  const bridge = await odd('deaf')
  const notes = 'x'.repeat(1_000_000)
  await assert.rejects(bridge.ask('create', { start, notes }, short), TimedOut)
  assert.ok(bridge.bufferedLength > 0)
  assert.equal(await bridge.close(short), null)
})

test('the types are of this client', async () => {
  const types = await readFile(new URL('../../examples/node/bridge.d.mts', import.meta.url), 'utf8')
  const classes = [...types.matchAll(/export class (\w+)/g)].map(match => match[1])
  assert.deepEqual(classes.sort(), Object.keys(client).sort())
  const members = [...types.matchAll(/^  (?:readonly )?(ask|close|bufferedLength)\b/gm)].map(match => match[1])
  assert.deepEqual(members.sort(), Object.getOwnPropertyNames(Bridge.prototype).filter(name => name !== 'constructor').sort())
})
