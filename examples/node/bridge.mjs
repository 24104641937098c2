// A client of tidemark-cal for any host in JavaScript: copy this file, and with TypeScript the two beside it,
// bridge.d.mts and protocol.d.mts. It needs Node 18 or later, or Electron, and no package.
//
//   const bridge = await Bridge.start('tidemark-cal')
//   const { events } = await bridge.ask('events', { from: '2026-03-23', to: '2026-03-30' })
//   bridge.on('changed', refresh)
//   await bridge.close()

import { spawn } from 'node:child_process'
import { EventEmitter, once } from 'node:events'

// The bridge answered with an error; its text is for the user, or for whoever wrote the request.
export class Refused extends Error {}

// The bridge has ended, so there is no answer. What became of a change that was asked for is not known.
export class Ended extends Error {}

// No answer within the time.
export class TimedOut extends Error {}

// A lone surrogate: half of a character, as is left when a text is cut in its middle.
const halfCharacter = /[\uD800-\uDBFF](?![\uDC00-\uDFFF])|(?<![\uD800-\uDBFF])[\uDC00-\uDFFF]/

function encoded (request) {
  // The bridge could only answer "bad JSON", without an id, and nobody would know to what.
  return JSON.stringify(request, (key, value) => {
    if (typeof value === 'string' && halfCharacter.test(value)) throw new TypeError(`half a character in "${key}"`)
    if (typeof value === 'number' && !Number.isFinite(value)) throw new TypeError(`no finite number in "${key}"`)
    return value
  }) + '\n'
}

// Events: 'changed', when the store changed; 'end', once, with an Ended.
export class Bridge extends EventEmitter {
  #process
  #timeout
  #lastId = 0
  #waiting = new Map() // by id
  #ready
  #end = null
  #pieces = [] // of a line that has not come to its end

  // Starts the bridge and waits for its ready line. `timeout` is in milliseconds, and that of ask() too; `environment`
  // has the variables that differ from the host's (a desktop application adds TIDEMARK_DESKTOP: '1').
  static async start (program, { arguments: programArguments = [], environment = {}, timeout = 30_000 } = {}) {
    const bridge = new Bridge(program, programArguments, environment, timeout)
    try {
      await bridge.#ready
    } catch (error) {
      bridge.#process.kill('SIGKILL')
      throw error
    }
    return bridge
  }

  constructor (program, programArguments, environment, timeout) {
    super()
    this.#timeout = timeout
    this.#process = spawn(program, programArguments, {
      stdio: ['pipe', 'pipe', 'inherit'], env: { ...process.env, ...environment }
    })
    this.#ready = this.#expect('ready', timeout, 'the ready line')
    // Always reading, or the bridge would one day wait for the host while the host waits for the bridge.
    this.#process.stdout.on('data', chunk => this.#read(chunk))
    this.#process.stdin.on('error', () => {}) // the bridge has ended, which 'close' tells
    this.#process.on('error', error => this.#over(new Ended(error.message, { cause: error })))
    this.#process.on('close', status => this.#over(new Ended(`the bridge has ended with status ${status}`)))
  }

  // Sends one request and resolves to its answer. Rejects with Refused, Ended, TimedOut, or a TypeError for fields that no
  // JSON can hold. `timeout: Infinity` suits 'auth', where a user thinks.
  async ask (command, fields = {}, { timeout = this.#timeout } = {}) {
    if (this.#end) throw this.#end
    const id = ++this.#lastId
    const line = encoded({ ...fields, id, cmd: command })
    const answer = this.#expect(id, timeout, `the answer to ${command}`)
    // Writes beyond what the pipe takes are kept in memory, in order; `bufferedLength` tells how much that is.
    this.#process.stdin.write(line)
    const value = await answer
    if ('error' in value) throw new Refused(value.error)
    return value
  }

  // Bytes of requests that the bridge has not read yet. A host that sends thousands waits for some answers first.
  get bufferedLength () {
    return this.#process.stdin.writableLength
  }

  // Ends the bridge by ending its input, and resolves to its exit status; null for one that had to be killed.
  async close ({ timeout = 5_000 } = {}) {
    if (!this.#end) {
      const timer = setTimeout(() => this.#process.kill('SIGKILL'), timeout)
      this.#process.stdin.end()
      await once(this, 'end')
      clearTimeout(timer)
    }
    return this.#process.exitCode
  }

  // What later comes under that key; an answer that comes after its time is passed over.
  #expect (key, timeout, what) {
    return new Promise((resolve, reject) => {
      const timer = Number.isFinite(timeout) && setTimeout(() => {
        this.#waiting.delete(key)
        reject(new TimedOut(`${what} did not come within ${timeout} ms`))
      }, timeout)
      this.#waiting.set(key, { resolve, reject, timer })
    })
  }

  #settle (key, how, value) {
    const waiting = this.#waiting.get(key)
    if (!waiting) return
    this.#waiting.delete(key)
    clearTimeout(waiting.timer)
    waiting[how](value)
  }

  // Lines end at line feeds alone, and are put together as bytes: a chunk ends anywhere, in a character too. Modules that
  // read lines would part them at U+2028 as well.
  #read (chunk) {
    for (let end; (end = chunk.indexOf(10)) !== -1; chunk = chunk.subarray(end + 1)) {
      const line = Buffer.concat([...this.#pieces.splice(0), chunk.subarray(0, end)])
      this.#take(JSON.parse(line.toString('utf8')))
    }
    if (chunk.length > 0) this.#pieces.push(chunk)
  }

  #take (line) {
    if (line.event === 'changed') this.emit('changed')
    else if (line.event === 'ready') this.#settle('ready', 'resolve', this.status = line.status)
    else this.#settle(line.id, 'resolve', line)
  }

  #over (end) {
    if (this.#end) return
    this.#end = end
    for (const key of [...this.#waiting.keys()]) this.#settle(key, 'reject', end)
    this.emit('end', end)
  }
}
