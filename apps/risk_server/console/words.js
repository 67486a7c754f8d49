// The words of the page: risks, times, sizes, and what a call is called.

// As the rules write them; the value is what goes over the wire.
export const RISKS = [['expire', -2], ['undefined', -1], ['LOW', 0], ['MEDIUM', 1], ['HIGH', 2], ['VERY_HIGH', 3]];

export function riskWord(risk) {
  return RISKS.find(([, value]) => value === risk)?.[0];
}

export function riskOrder(word) {
  return RISKS.find(([name]) => name.toLowerCase() === word.toLowerCase())?.[1];
}

// A shape beside the colour, so that a level is told without it.
export const RISK_MARKS = new Map([[-2, '\u29b8'], [-1, '?'], [0, '\u25cf'], [1, '\u25b2'], [2, '\u25c6'], [3, '\u25a0']]);

// The last part of a service's path: "/qrsk-med/3.0//GetDeviceID/" is "GetDeviceID".
export function callName(row) {
  if (!row.path) return '(connection)';
  return row.facts?.checkpoint && /Checkpoint/.test(row.path) ? row.facts.checkpoint :
         row.path.replace(/\/+$/, '').split('/').pop() || row.path;
}

const two = (n) => String(n).padStart(2, '0');

export function clock(milliseconds, withFraction = false) {
  const time = new Date(milliseconds);
  const text = [time.getHours(), time.getMinutes(), time.getSeconds()].map(two).join(':');
  return withFraction ? text + '.' + String(time.getMilliseconds()).padStart(3, '0') : text;
}

export function duration(microseconds) {
  if (microseconds === undefined) return '';
  const ms = microseconds / 1000;
  return ms < 10 ? ms.toFixed(1) : ms < 10_000 ? ms.toFixed(0) : (ms / 1000).toFixed(1) + ' s';
}

export function bytes(count) {
  return count < 1000 ? count + ' B' : count < 1_000_000 ? (count / 1000).toFixed(1) + ' kB' : (count / 1e6).toFixed(1) + ' MB';
}

export function many(count, word) {
  return count + ' ' + word + (count === 1 ? '' : 's');
}

// What became of a call, in a word and with its mark.
export function resultOf(row) {
  if (row.risk !== undefined && row.status === 200 && !row.fault) {
    return {kind: 'risk' + row.risk, mark: RISK_MARKS.get(row.risk), word: riskWord(row.risk)};
  }
  if (row.fault) return {kind: 'bad', mark: '\u2716', word: row.status ? String(row.status) : 'no reply'};
  if (row.status === 0) return {kind: 'bad', mark: '\u2716', word: row.delivery ?? 'no reply'};
  if (row.status !== 200) return {kind: 'warn', mark: '!', word: String(row.status)};
  return {kind: 'ok', mark: '', word: 'ok'};
}
