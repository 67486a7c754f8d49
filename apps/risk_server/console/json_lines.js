// Lays a JSON text out in lines for reading: indented, arrays of plain values wrapped, with the marks of a contract check
// at their places. Only the layout is ours: every value is the very text that was sent.
//
// A line is {depth, parts: [{text, kind, title}], mark, ghost, goesOn}: mark is an index into the violations, ghost is true
// for a line that stands where a key is missing, goesOn for one whose text goes on in the next.

import {nodeAt, parseTree} from './json_tokens.js';

const WRAP = 96;        // characters of an array of plain values in one line
const PIECE = 2048;     // a longer text is cut into lines
const MAX_DEPTH = 40;   // deeper lines are indented no further

// {lines, error}: of a text that is no JSON the raw lines, with the place of the error marked.
export function layOut(text, violations = []) {
  const {root, error} = parseTree(text);
  if (!root) return {lines: rawLines(text, error), error};
  const writer = new LineWriter(text, marksByNode(root, violations), violations);
  writer.write(root);
  return {lines: writer.lines, error: null};
}

export function rawLines(text, error = null) {
  const lines = [];
  let offset = 0;
  for (const line of text.split('\n')) {
    const last = offset + line.length;
    for (let begin = offset; begin === offset || begin < last; begin += PIECE) {
      const end = Math.min(begin + PIECE, last);
      const isBad = error && error.offset >= begin && (error.offset < end || end === last) && error.offset <= end;
      const raw = (from, to) => ({text: text.slice(from, to), kind: 'raw'});
      lines.push({depth: 0, goesOn: end < last, mark: isBad ? 0 : undefined, parts: !isBad ? [raw(begin, end)] :
        [raw(begin, error.offset), {text: text.slice(error.offset, end) || ' ', kind: 'bad', title: error.reason}]});
    }
    offset = last + 1;
  }
  return lines;
}

// Which violation stands at a node, and which keys are missing in it.
function marksByNode(root, violations) {
  const marks = new Map();
  const at = (node) => marks.get(node) ?? marks.set(node, {missing: []}).get(node);
  violations.forEach(({place}, index) => {
    const node = nodeAt(root, place);
    if (node) at(node).own ??= index;
    else at(nodeAt(root, place.slice(0, -1)) ?? root).missing.push({index, key: String(place.at(-1))});
  });
  return marks;
}

const isPlain = (node) => !node.members && !node.items;

class LineWriter {
  constructor(text, marks, violations) {
    Object.assign(this, {text, marks, violations, lines: []});
  }

  // The tree is walked with a stack of own: it may be deeper than calls can be.
  write(root) {
    const waiting = [{node: root, depth: 0, front: [], back: ''}];
    while (waiting.length > 0) {
      const task = waiting.pop();
      if (task.close) this.add(task.depth, [{text: task.close, kind: 'mark'}]);
      else if (this.opens(task.node)) waiting.push(...this.open(task).reverse());
      else this.writeFlat(task);
    }
  }

  add(depth, parts, more) {
    this.lines.push({depth: Math.min(depth, MAX_DEPTH), parts, ...more});
  }

  opens(node) {
    return (node.members ?? node.items ?? []).length > 0 || (this.marks.get(node)?.missing.length > 0 && !isPlain(node));
  }

  open({node, depth, front, back}) {
    const [begin, end] = node.members ? '{}' : '[]';
    const {own, missing = []} = this.marks.get(node) ?? {};
    this.add(depth, [...front, {text: begin, kind: 'mark'}], {mark: own});
    for (const {index, key} of missing) {
      this.add(depth + 1, [{text: JSON.stringify(key), kind: 'key'}, {text: ' ' + this.violations[index].reason, kind: 'reason'}], {ghost: true, mark: index});
    }
    const tasks = node.members ? this.memberTasks(node) : this.itemTasks(node);
    return [...tasks.map((task, index) => ({front: [], ...task, depth: depth + 1, back: index + 1 < tasks.length ? ',' : ''})), {close: end + back, depth}];
  }

  memberTasks({members}) {
    return members.map(({keyStart, keyEnd, value}) => ({
      node: value, front: [{text: this.text.slice(keyStart, keyEnd), kind: 'key'}, {text: ': ', kind: 'mark'}]}));
  }

  itemTasks({items}) {
    if (!items.every((item) => isPlain(item) && !this.marks.has(item))) return items.map((node) => ({node}));
    const tasks = [];
    for (let from = 0, to = 0; from < items.length; from = to) {
      for (to = from + 1; to < items.length && items[to].end - items[from].start < WRAP;) to += 1;
      tasks.push({node: items[from], run: items.slice(from, to)});
    }
    return tasks;
  }

  // One value, or a run of plain ones; what is too long for a line goes on in the next.
  writeFlat({node, run = [node], depth, front, back}) {
    const parts = [...front];
    const more = {mark: this.marks.get(node)?.own};
    run.forEach((item, index) => {
      if (index > 0) parts.push({text: ', ', kind: 'mark'});
      for (let at = item.start; at < item.end; at += PIECE) {
        parts.push({text: this.text.slice(at, Math.min(item.end, at + PIECE)), kind: item.kind});
        if (at + PIECE < item.end) this.add(depth, parts.splice(0), {...more, goesOn: true});
      }
    });
    this.add(depth, [...parts, {text: back, kind: 'mark'}], more);
  }
}
