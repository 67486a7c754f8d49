import assert from 'node:assert/strict';
import {test} from 'node:test';
import {layOut, rawLines} from './json_lines.js';
import {nodeAt, parseTree} from './json_tokens.js';

const shown = (lines) => lines.map((line) => line.parts.map((part) => part.text).join(''));

test('reads what JSON.parse() reads, and refuses what it refuses', () => {
  const right = ['{}', '[]', ' [1, -0.5e+3, true, null, "a\\u00e9\\n"] ', '{"a":{"b":[{}]},"":0}', '"x"', '1e9', '"\\ud800"'];
  const wrong = ['', '{', '[1,]', '{"a"}', '{"a":}', '{"a":1,}', '01', '1.', '+1', 'nul', '"a', '"\t"', '"\\x"', '"\\u12"', '[1] 2', '{a:1}', "'a'", '[1 2]', '\u00a01'];
  for (const text of right) {
    assert.equal(parseTree(text).error, null, text);
    assert.doesNotThrow(() => JSON.parse(text), text);
  }
  for (const text of wrong) {
    assert.ok(parseTree(text).error, text);
    assert.throws(() => JSON.parse(text), undefined, text);
  }
});

test('keeps what JSON.parse() loses', () => {
  const text = '{"id":9007199254740993,"a":1,"a":2,"n":1.50,"deep":' + '['.repeat(100_000) + ']'.repeat(100_000) + '}';
  const {root} = parseTree(text);
  assert.equal(root.members.length, 5);
  const textAt = (place) => text.slice(nodeAt(root, place).start, nodeAt(root, place).end);
  assert.deepEqual([textAt(['id']), textAt(['a']), nodeAt(root, ['a', 'b']), nodeAt(root, ['no'])], ['9007199254740993', '2', null, null]);
  const lines = shown(layOut('{"id":9007199254740993,"a":1,"a":2,"n":1.50}').lines);
  assert.deepEqual(lines, ['{', '"id": 9007199254740993,', '"a": 1,', '"a": 2,', '"n": 1.50', '}']);
});

test('tells where a text stops being JSON', () => {
  assert.equal(parseTree('{"a": tru}').error.offset, 6);
  const {lines, error} = layOut('{"a":\n tru}');
  assert.equal(error.offset, 7);
  assert.equal(lines[1].mark, 0);
  assert.deepEqual(shown(lines), ['{"a":', ' tru}']);
});

test('marks every violation at its place, a missing key as a line of its parent', () => {
  const violations = [{place: ['keys', 'id'], reason: 'missing'}, {place: ['list', 1], reason: 'wrong'},
                      {place: ['a.b'], reason: 'not expected here'}, {place: ['gone', 'deeper'], reason: 'missing'}];
  const {lines} = layOut('{"keys":{},"list":["x","y"],"a.b":1}', violations);
  const marked = lines.filter((line) => line.mark !== undefined).map((line) => [line.mark, line.ghost ?? false, shown([line])[0]]);
  assert.deepEqual(marked, [[3, true, '"deeper" missing'], [0, true, '"id" missing'], [1, false, '"y"'], [2, false, '"a.b": 1']]);
});

test('a long text is cut into lines that are the text together', () => {
  const long = '"' + '\u00e9x'.repeat(5000) + '"';
  const {lines} = layOut('[' + long + ',1]');
  assert.equal(lines.slice(1, -2).map((line) => line.parts.map((part) => part.text).join('')).join(''), long + ',');
  assert.ok(Math.max(...lines.map((line) => shown([line])[0].length)) < 2100);
  const raw = 'x'.repeat(5000) + '\n\ny';
  assert.equal(rawLines(raw).map((line) => shown([line])[0] + (line.goesOn ? '' : '\n')).join(''), raw + '\n');
});
