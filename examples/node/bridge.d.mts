import type { Commands, Status } from './protocol.mjs'

export class Refused extends Error {}
export class Ended extends Error {}
export class TimedOut extends Error {}

type Listener = { changed: () => void, end: (end: Ended) => void }

export class Bridge {
  private constructor ()
  static start (program: string, options?: {
    arguments?: string[]
    environment?: Record<string, string>
    /** In milliseconds. */
    timeout?: number
  }): Promise<Bridge>
  /** The access to events when the bridge started. */
  readonly status: Status
  readonly bufferedLength: number
  ask<Command extends keyof Commands> (
    command: Command, fields?: Commands[Command]['request'], options?: { timeout?: number }
  ): Promise<Commands[Command]['answer']>
  close (options?: { timeout?: number }): Promise<number | null>
  on<Event extends keyof Listener> (event: Event, listener: Listener[Event]): this
  once<Event extends keyof Listener> (event: Event, listener: Listener[Event]): this
  off<Event extends keyof Listener> (event: Event, listener: Listener[Event]): this
}
