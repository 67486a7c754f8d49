// The filter line: words that must all hold for an exchange.
//
//   path:Get  user:noor  session:F2F0  device:  checkpoint:LOGIN  screen:PINCODE  delivery:cut  status:503  rule:6  id:412
//   risk:HIGH  risk>=MEDIUM  ms>100  is:refused  is:fault  is:verdict  is:lost
//   "any text" or a bare word: in what the list shows, or in a body      -word: the opposite

import {riskOrder, riskWord} from './words.js';

const FACTS = ['user', 'session', 'device', 'checkpoint', 'screen', 'action', 'outcome', 'requestID', 'app'];
const TEXTS = {
  path: (row) => row.path, method: (row) => row.method, delivery: (row) => row.delivery, fault: (row) => `${row.fault ?? ''}\n${row.faultInjected ?? ''}`,
  ...Object.fromEntries(FACTS.map((fact) => [fact, (row) => row.facts?.[fact]])),
};
const FLAGS = {
  refused: (row) => row.fault, fault: (row) => row.faultInjected, verdict: (row) => row.risk !== undefined, ok: (row) => !row.fault && row.status === 200,
  lost: (row) => row.delivery !== undefined && row.delivery !== 'whole',
};
const NUMBERS = {
  status: (row) => row.status, rule: (row) => row.rule + 1, id: (row) => row.id, ms: (row) => row.took / 1000, size: (row) => row.requestSize, risk: (row) => row.risk,
};
// A value that is not there is NaN or undefined, and none of these holds for it.
const SIGNS = {':': (a, b) => a === b, '>=': (a, b) => a >= b, '<=': (a, b) => a <= b, '>': (a, b) => a > b, '<': (a, b) => a < b};

const TERM = /(-?)(?:(\w+)(:|>=|<=|>|<)("[^"]*"?|\S*)|("[^"]*"?|\S+))/g;

// {terms, texts, error}: texts are those that may also stand in a body.
export function parseQuery(line) {
  const terms = [];
  let error = null;
  for (const [all, minus, field, sign, value, bare] of line.matchAll(TERM)) {
    const term = field === undefined ? textTerm(unquote(bare)) : fieldTerm(field, sign, unquote(value));
    if (term) terms.push({...term, negative: minus === '-'});
    else error ??= `"${all}" is no filter`;
  }
  return {terms, texts: terms.flatMap(({text}) => text ?? []), error};
}

// `found` has the ids whose bodies hold a text, by text; without it while the search is under way.
export function matches(row, {terms}, found = new Map()) {
  return terms.every(({text, test, negative}) => Boolean(test(row) || found.get(text)?.has(row.id)) !== negative);
}

function unquote(text) {
  return text.startsWith('"') ? text.slice(1).replace(/"$/, '') : text;
}

function textTerm(text) {
  const wanted = text.toLowerCase();
  const shown = (row) => [row.path, row.method, row.fault, row.faultInjected, row.status, riskWord(row.risk), ...Object.values(row.facts ?? {})];
  return {text, test: (row) => shown(row).join('\n').toLowerCase().includes(wanted)};
}

function fieldTerm(field, sign, value) {
  if (NUMBERS[field]) {
    const wanted = field === 'risk' ? riskOrder(value) : value === '' ? NaN : Number(value);
    return wanted === undefined || Number.isNaN(wanted) ? null : {test: (row) => SIGNS[sign](NUMBERS[field](row), wanted)};
  }
  if (sign !== ':') return null;
  if (field === 'is') return FLAGS[value] ? {test: FLAGS[value]} : null;
  const wanted = value.toLowerCase();
  return TEXTS[field] ? {test: (row) => String(TEXTS[field](row) ?? '').toLowerCase().includes(wanted)} : null;
}
