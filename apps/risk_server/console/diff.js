// Two bodies, key by key.

import {parseTree} from './json_tokens.js';

// Keys whose values differ in every call.
export const VOLATILE = /^(requestID|date|signedRisk)$|time/i;

// [{place, left, right}] of what differs, in the order of the left; left or right is undefined where it is missing.
// Values are compared as they are written. Both texts are JSON, or there is one difference at the root.
export function differences(left, right, ignored = /^(?!)/) {
  const one = flatten(left);
  const other = flatten(right);
  const skipped = (place) => place.some((step) => ignored.test(step));
  const found = [];
  for (const [key, {place, text}] of one) {
    const there = other.get(key)?.text;
    if (there !== text && !skipped(place)) found.push({place, left: text, right: there});
  }
  for (const [key, {place, text}] of other) {
    if (!one.has(key) && !skipped(place)) found.push({place, left: undefined, right: text});
  }
  return found;
}

// Every plain value and every empty object or array by its place.
function flatten(text) {
  const values = new Map();
  const {root} = parseTree(text);
  const put = (place, value) => values.set(JSON.stringify(place), {place, text: value});
  if (!root) {
    put([], text);
    return values;
  }
  const waiting = [{node: root, place: []}];
  while (waiting.length > 0) {
    const {node, place} = waiting.pop();
    const below = node.kind === 'object' ? node.members.map((m) => ({node: m.value, place: [...place, m.key]})) :
                  node.kind === 'array' ? node.items.map((item, i) => ({node: item, place: [...place, i]})) : [];
    if (below.length === 0) put(place, text.slice(node.start, node.end));
    waiting.push(...below.reverse());
  }
  return values;
}

// keys.requestID, tracingData[3].date; a key that is no plain word stands in quotes.
export function placeText(place) {
  let text = '';
  for (const step of place) {
    if (typeof step === 'number') {
      text += `[${step}]`;
    } else if (/^[\w-]+$/.test(step)) {
      text += (text ? '.' : '') + step;
    } else {
      text += `[${JSON.stringify(step)}]`;
    }
  }
  return text || '(the body)';
}
