// Reads JSON as it stands in the text: values know where they begin and end, numbers keep their digits, a key that stands
// twice stands twice. What JSON.parse() would change is what the console is there to show.
//
// A node is {kind, start, end}: 'object' with members [{keyStart, keyEnd, key, value}], 'array' with items, 'string',
// 'number', 'word' (true, false, null). Nothing here recurses: a body may be nested 100 000 deep.

const NUMBER = /-?(0|[1-9]\d*)(\.\d+)?([eE][+-]?\d+)?/y;
const ESCAPE = /\\(["\\/bfnrt]|u[0-9a-fA-F]{4})/y;
const WORD = /true|false|null/y;
const BLANKS = /[ \t\n\r]*/y;

// {root, error}: root is null where error is {offset, reason}.
export function parseTree(text) {
  const reader = new TreeReader(text);
  try {
    return {root: reader.read(), error: null};
  } catch (error) {
    return {root: null, error: {offset: reader.at, reason: error.message}};
  }
}

class TreeReader {
  constructor(text) {
    this.text = text;
    this.at = 0;
  }

  // What the pattern takes at the place; nothing is taken when it does not fit.
  take(pattern) {
    pattern.lastIndex = this.at;
    const found = pattern.exec(this.text)?.[0] ?? '';
    this.at += found.length;
    return found;
  }

  read() {
    const open = [];  // the objects and arrays around the place, outermost first
    let root = null;
    do {
      this.take(BLANKS);
      const around = open.at(-1);
      if (around && this.closes(around)) {
        open.pop();
        continue;
      }
      const node = this.beginValue();
      root ??= node;
      if (around) attach(around, node);
      if (node.end === undefined) open.push(node);
    } while (open.length > 0);
    this.take(BLANKS);
    if (this.at < this.text.length) throw new Error('more text behind the value');
    return root;
  }

  // Takes the closing bracket, or what stands in front of a further member.
  closes(around) {
    const isObject = around.kind === 'object';
    if (this.text[this.at] === (isObject ? '}' : ']')) {
      this.at += 1;
      around.end = this.at;
      return true;
    }
    if ((around.members ?? around.items).length > 0) {
      if (this.text[this.at] !== ',') throw new Error('expected a comma or the end');
      this.at += 1;
      this.take(BLANKS);
    }
    if (isObject) this.readKey(around);
    return false;
  }

  readKey(object) {
    const keyStart = this.at;
    const raw = this.takeString();
    if (!raw) throw new Error('expected a key');
    const keyEnd = this.at;
    this.take(BLANKS);
    if (this.text[this.at] !== ':') throw new Error('expected a colon');
    this.at += 1;
    this.take(BLANKS);
    object.members.push({keyStart, keyEnd, key: JSON.parse(raw), value: null});
  }

  beginValue() {
    const start = this.at;
    const c = this.text[start];
    if (c === '{' || c === '[') {
      this.at += 1;
      return c === '{' ? {kind: 'object', start, members: []} : {kind: 'array', start, items: []};
    }
    const kind = this.takeString() ? 'string' : this.take(NUMBER) ? 'number' : this.take(WORD) ? 'word' : null;
    if (!kind) throw new Error(c === undefined ? 'the text ends here' : 'no value');
    return {kind, start, end: this.at};
  }

  takeString() {
    const {text, at} = this;
    if (text[at] !== '"') return '';
    for (this.at += 1; this.at < text.length; this.at += 1) {
      const c = text[this.at];
      if (c === '"') {
        this.at += 1;
        return text.slice(at, this.at);
      }
      if (c < ' ') throw new Error('a control character in a text');
      if (c !== '\\') continue;
      ESCAPE.lastIndex = this.at;
      if (!ESCAPE.test(text)) throw new Error('no such escape');
      this.at = ESCAPE.lastIndex - 1;
    }
    this.at = at;
    throw new Error('a text without an end');
  }
}

function attach(around, node) {
  if (around.kind === 'array') around.items.push(node);
  else around.members.at(-1).value = node;
}

// The node at a place of keys and indexes, or null. Of a key that stands twice it is the last, as the server reads it.
export function nodeAt(root, place) {
  let node = root;
  for (const step of place) {
    node = (node?.kind === 'array' ? node.items[step] : node?.members?.findLast((member) => member.key === step)?.value) ?? null;
  }
  return node;
}
