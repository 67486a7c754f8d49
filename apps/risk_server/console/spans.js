// The entries of a trace upload as spans: a start and the end that belongs to it.
//
// Nothing on the wire tells which end is whose: the newest start of the same method and parameters is taken, first of the
// same thread; an end may be written by another one. What cannot be told is marked: an 'open' span has no end, an
// 'ambiguous' one could have had another.

// `entries` is the parsed "tracingData". {spans, pins, threads, begin, end}: spans hold {index, name, params, thread, start,
// end, state, middles, depth}; pins {entry, time, kind} are 'error' entries, and an 'end' or a 'middle' without a start.
export function spansOf(entries) {
  const open = new Map();
  const spans = [];
  const pins = [];
  entries.forEach((entry, index) => {
    if (entry?.date === undefined) {
      pins.push({entry, time: Number(entry?.error_timestamp) || undefined, kind: 'error'});
      return;
    }
    const time = Date.parse(entry.date);
    if (entry.statusLoggingType === 'Start') {
      begin(open, spans, entry, index, time);
      return;
    }
    const kind = entry.statusLoggingType === 'End' ? 'end' : 'middle';
    const span = take(open, entry, kind);
    if (!span) pins.push({entry, time, kind});
    else if (kind === 'end') Object.assign(span, {end: time, endIndex: index, state: span.isAlike ? 'ambiguous' : 'closed'});
    else append(open, span, entry, time);
  });
  return {...arrange(spans, pins), spans, pins};
}

const keyOf = ({methodName = '', paramList = []}, dropped = 0) => JSON.stringify([methodName, paramList.slice(0, paramList.length - dropped)]);
const waitingFor = (open, key) => open.get(key) ?? open.set(key, []).get(key);

function begin(open, spans, entry, index, time) {
  const {methodName = '(no name)', threadName = '(no thread)', paramList = []} = entry;
  const span = {index, name: methodName, params: paramList, thread: threadName, start: time, state: 'open', middles: []};
  const waiting = waitingFor(open, keyOf(entry));
  spans.push(span);
  waiting.push(span);
  // Two that are alike and open at once: their ends cannot be told apart.
  if (waiting.length > 1) for (const other of waiting) other.isAlike = true;
}

// What is appended stands as a further parameter behind those of the start.
function take(open, entry, kind) {
  for (const dropped of kind === 'end' ? [0, 1] : [1, 0]) {
    const waiting = waitingFor(open, keyOf(entry, dropped));
    const own = waiting.findLastIndex((span) => span.thread === entry.threadName);
    const [span] = waiting.splice(own, 1);
    if (span) return span;
  }
  return null;
}

function append(open, span, entry, time) {
  span.middles.push({time, text: (entry.paramList ?? []).at(-1)});
  waitingFor(open, keyOf(entry)).push(span);
}

// Nests spans by containment within their thread, and says what time they all cover.
function arrange(spans, pins) {
  const times = [...spans.flatMap((s) => [s.start, s.end]), ...pins.map((p) => p.time)].filter(Number.isFinite);
  const end = Math.max(...times);
  const threads = [...new Set(spans.map((span) => span.thread))];
  for (const thread of threads) nest(spans.filter((span) => span.thread === thread), end);
  return times.length > 0 ? {threads, begin: Math.min(...times), end} : {threads, begin: 0, end: 0};
}

function nest(spans, end) {
  const around = [];
  const endOf = (span) => span.end ?? end;
  const written = (span) => span.endIndex ?? Infinity;
  for (const span of [...spans].sort((a, b) => a.start - b.start || endOf(b) - endOf(a) || a.index - b.index)) {
    // One that begins when another ends is inside of it only if it was written before that end.
    const holds = (outer) => endOf(outer) >= endOf(span) && (endOf(outer) > span.start || written(outer) > written(span));
    while (around.length > 0 && !holds(around.at(-1))) around.pop();
    span.depth = around.length;
    around.push(span);
  }
}

const SLACK = 50;  // milliseconds: the clocks are one, but both are read at other moments

// The exchange that a span of a request is probably about: the same path, and times that meet.
export function exchangeOf({name, params, start, end = Infinity}, rows) {
  const path = /^https?:\/\/[^/]*(\/.*)$/.exec(params[0] ?? '')?.[1];
  if (name !== 'requestFromServer' || path === undefined) return undefined;
  const fitting = rows.filter((row) => row.path === path && row.received >= start - SLACK && row.received <= end + SLACK);
  return fitting.sort((a, b) => Math.abs(a.received - start) - Math.abs(b.received - start))[0];
}
