// Rules and faults in words, and rules made of a call.

export const CONDITIONS = ['checkpoint', 'user', 'amountAtLeast', 'amountBelow', 'currency', 'country', 'nth', 'everyNth'];

export function ruleText(rule) {
  const {risk, ...conditions} = rule;
  return (Object.entries(conditions).map((pair) => pair.join(' ')).join(', ') || 'always') + ' \u2192 ' + risk;
}

// "Answer this user so, next time": a rule in front of the others.
export function ruleForCall(row, risk) {
  const rule = {};
  if (row.facts?.user) rule.user = row.facts.user;
  if (row.facts?.checkpoint) rule.checkpoint = row.facts.checkpoint;
  return {...rule, risk};
}

// The place of the server's message: "[2].risk: ..." is {index: 2, key: 'risk', reason: '...'}.
export function placeOfFault(message) {
  const match = /^\[(\d+)\](?:\.([^:]+))?: (.*)$/s.exec(message ?? '');
  return match ? {index: Number(match[1]), key: match[2], reason: match[3]} : {index: undefined, key: undefined, reason: message};
}

export function faultText(fault) {
  const {path, name, skip, first, times, ...does} = fault;
  const effects = Object.entries(does).map(([key, value]) => (value === true ? key : key + ' ' + shortText(value)));
  const bounds = [skip && 'skip ' + skip, first && 'first ' + first, times && 'times ' + times].filter(Boolean);
  return (name ? name + ': ' : '') + effects.join(', ') + ' on ' + path + (bounds.length ? ' (' + bounds.join(', ') + ')' : '');
}

function shortText(value) {
  const text = typeof value === 'string' ? value : JSON.stringify(value);
  return text.length > 40 ? text.slice(0, 40) + '\u2026' : text;
}
