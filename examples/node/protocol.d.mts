// Written by tools/protocol_types from docs/protocol.schema.json.

/** The access to events, or to reminders. */
export type Status = 'notDetermined' | 'restricted' | 'denied' | 'fullAccess' | 'writeOnly' | 'unknown'

/** An instant, or the start of a day in the local time zone of the process. */
export type RequestDate = string

/** An instant in UTC, in whole seconds. */
export type UtcDate = string

/** sRGB. */
export type Color = string

/** An event calendar, or a reminders list. */
export interface CalendarRecord {
  id: string
  title: string
  /** The title of its account. */
  source: string
  sourceType: 'local' | 'exchange' | 'caldav' | 'mobileme' | 'subscribed' | 'birthdays' | 'unknown'
  writable: boolean
  color?: Color
}

/** One event, or one occurrence of a repeating event. */
export interface EventRecord {
  /** All occurrences of a series share it. */
  id: string
  title: string
  isAllDay: boolean
  calendarId: string
  /** The title of its calendar. */
  calendar: string
  isRecurring: boolean
  writable: boolean
  /** -1 not supported, 0 busy, 1 free, 2 tentative, 3 unavailable. */
  availability: number
  start?: UtcDate
  end?: UtcDate
  /** Where the occurrence was meant to be; names it in `update` and `delete`. */
  occurrence?: UtcDate
  lastModified?: UtcDate
  notes?: string
  location?: string
  url?: string
  color?: Color
  /** Names, or addresses. */
  attendees?: string[]
}

export interface ReminderRecord {
  id: string
  title: string
  listId: string
  /** The title of its list. */
  list: string
  isCompleted: boolean
  /** 0 none, 1 the highest, 9 the lowest. */
  priority: number
  /** Due at a time of day; otherwise on a day, or not at all. */
  hasDueTime: boolean
  writable: boolean
  dueDate?: UtcDate
  notes?: string
  color?: Color
}

/** Once, after the start. */
export interface ReadyNotice {
  event: 'ready'
  status: Status
}

/** The store changed. Ask again for what is shown. */
export interface ChangedNotice {
  event: 'changed'
}

/** What each command takes, without `id` and `cmd`, and what it gives, without `id`. */
export interface Commands {
  /** How the access to events stands. */
  'status': {
    request: Record<string, never>
    answer: {
      status: Status
    }
  }
  /** How the access to reminders stands. */
  'reminders-status': {
    request: Record<string, never>
    answer: {
      status: Status
    }
  }
  /** Asks for full access to events. The answer waits for the user. */
  'auth': {
    request: Record<string, never>
    answer: {
      status: Status
      granted: boolean
    }
  }
  /** Asks for full access to reminders. The answer waits for the user. */
  'reminders-auth': {
    request: Record<string, never>
    answer: {
      status: Status
      granted: boolean
    }
  }
  'calendars': {
    request: Record<string, never>
    answer: {
      calendars: CalendarRecord[]
    }
  }
  'reminder-lists': {
    request: Record<string, never>
    answer: {
      lists: CalendarRecord[]
    }
  }
  /** The events in a range. */
  'events': {
    request: {
      from: RequestDate
      to: RequestDate
      /** Only these calendars, by id. An empty array gives no events. */
      calendars?: string[]
    }
    answer: {
      /** Sorted by start. */
      events: EventRecord[]
    }
  }
  'create': {
    request: {
      title?: string
      start: RequestDate
      /** Without it the event lasts 30 minutes. */
      end?: RequestDate
      isAllDay?: boolean
      notes?: string
      location?: string
      url?: string
      /** As in the event's record. */
      availability?: number
      /** Without it: the default calendar. */
      calendarId?: string
    }
    answer: {
      event: EventRecord
    }
  }
  'update': {
    request: {
      eventId: string
      /** Which occurrence; without it the first. */
      occurrence?: RequestDate
      title?: string
      start?: RequestDate
      end?: RequestDate
      isAllDay?: boolean
      notes?: string
      location?: string
      url?: string
      /** As in the event's record. */
      availability?: number
      /** Where to move it. */
      calendarId?: string
    }
    answer: {
      event: EventRecord
    }
  }
  'delete': {
    request: {
      eventId: string
      /** Which occurrence; without it the first. */
      occurrence?: RequestDate
    }
    answer: {
      ok: true
    }
  }
  /** What is due, and what was completed, in a range. */
  'reminders': {
    request: {
      from: RequestDate
      to: RequestDate
      /** Only these lists, by id. An empty array gives no reminders. */
      lists?: string[]
      /** Also what is still open and was due before `from`. */
      overdue?: boolean
    }
    answer: {
      /** In no order. */
      reminders: ReminderRecord[]
    }
  }
  'reminder-create': {
    request: {
      title?: string
      notes?: string | null
      /** Without it: the default list. */
      listId?: string
      dueDate?: RequestDate
      /** Whether `dueDate` has a time of day; true without it. */
      hasDueTime?: boolean
      completed?: boolean
    }
    answer: {
      reminder: ReminderRecord
    }
  }
  'reminder-update': {
    request: {
      reminderId: string
      title?: string
      /** Null removes the notes. */
      notes?: string | null
      /** Where to move it. */
      listId?: string
      dueDate?: RequestDate
      /** Whether `dueDate` has a time of day; true without it. */
      hasDueTime?: boolean
      completed?: boolean
    }
    answer: {
      reminder: ReminderRecord
    }
  }
  'reminder-complete': {
    request: {
      reminderId: string
      /** True without it. */
      completed?: boolean
    }
    answer: {
      reminder: ReminderRecord
    }
  }
  'reminder-delete': {
    request: {
      reminderId: string
    }
    answer: {
      ok: true
    }
  }
}
