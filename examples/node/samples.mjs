// What the examples share: a scratch copy of the sample calendars, and the bridge's place.

import { cp, mkdtemp, rm } from 'node:fs/promises'
import { existsSync } from 'node:fs'
import { tmpdir } from 'node:os'
import { join } from 'node:path'
import { fileURLToPath } from 'node:url'

const root = fileURLToPath(new URL('../..', import.meta.url))
const built = join(root, 'build/release/tidemark-cal')

// The program and its arguments: those on the command line, else the bridge that was built here, else the installed one.
export const [program, ...programArguments] =
  process.argv.length > 2 ? process.argv.slice(2) : [existsSync(built) ? built : 'tidemark-cal']

// One place, so that the page is the same on every machine.
export const timeZone = 'Europe/Berlin'

// Calls `work` with the environment of a copy that goes again. Your own calendars are neither shown nor touched.
export async function withSampleCalendars (work) {
  const dataHome = await mkdtemp(join(tmpdir(), 'tidemark-'))
  try {
    await cp(join(root, 'examples/calendars'), join(dataHome, 'calendars'), { recursive: true })
    await work({ XDG_DATA_HOME: dataHome, TZ: timeZone })
  } finally {
    await rm(dataHome, { recursive: true })
  }
}
