import assert from 'node:assert/strict';
import {test} from 'node:test';
import {exchangeOf, spansOf} from './spans.js';

const START = Date.parse('2023-11-14T22:13:20.000Z');
const entry = (ms, thread, name, status, ...params) => (
  {date: new Date(START + ms).toISOString(), threadName: thread, methodName: name, statusLoggingType: status, paramList: params});
const told = (found) => found.spans.map((s) => `${s.name} ${s.start - START}-${s.end === undefined ? '' : s.end - START} ${s.state} ${s.depth}`);

test('pairs a start with the end of its thread, method and parameters', () => {
  const found = spansOf([
    entry(0, 'a', 'outer', 'Start', 'x'), entry(1, 'a', 'inner', 'Start'), entry(1, 'a', 'inner', 'End'),
    entry(2, 'b', 'other', 'Start', 'p'), entry(3, 'b', 'other', 'Start', 'q'), entry(4, 'b', 'other', 'End', 'p'),
    entry(6, 'a', 'outer', 'End', 'x'), entry(7, 'b', 'other', 'End', 'q')]);
  assert.deepEqual(told(found), ['outer 0-6 closed 0', 'inner 1-1 closed 1', 'other 2-4 closed 0', 'other 3-7 closed 0']);
  assert.deepEqual([found.begin - START, found.end - START, found.threads], [0, 7, ['a', 'b']]);
});

test('an end may come from another thread', () => {
  const found = spansOf([entry(0, 'main', 'request', 'Start', 'u'), entry(9, 'net', 'request', 'End', 'u')]);
  assert.deepEqual(told(found), ['request 0-9 closed 0']);
});

test('what is appended keeps its span open', () => {
  const found = spansOf([entry(0, 'a', 'ask', 'Start', 'x'), entry(2, 'b', 'ask', 'Middle', 'x', 'sent'), entry(3, 'b', 'ask', 'Middle', 'x', 'sent', 'got'),
                         entry(5, 'b', 'ask', 'End', 'x', 'sent', 'got')]);
  assert.deepEqual(told(found), ['ask 0-5 closed 0']);
  assert.deepEqual(found.spans[0].middles.map((middle) => middle.text), ['sent', 'got']);
});

test('what cannot be told is said, not guessed', () => {
  const found = spansOf([entry(0, 'a', 'x', 'Start'), entry(1, 'a', 'x', 'Start'), entry(2, 'a', 'x', 'End'), entry(3, 'a', 'x', 'End'),
                         entry(4, 'a', 'open', 'Start'), entry(5, 'a', 'lost', 'End'), {error_timestamp: START + 6, error_type: 'json'}, null]);
  assert.deepEqual(told(found), ['x 0-3 ambiguous 0', 'x 1-2 ambiguous 1', 'open 4- open 0']);
  assert.deepEqual(found.pins.map((pin) => pin.kind), ['end', 'error', 'error']);
});

test('a request is probably about the call of its path and time', () => {
  const rows = [{id: 1, path: '/a/', received: START}, {id: 2, path: '/a/', received: START + 900}, {id: 3, path: '/b/', received: START + 900}];
  const span = {name: 'requestFromServer', params: ['http://127.0.0.1:1/a/'], start: START + 890, end: START + 910};
  assert.equal(exchangeOf(span, rows).id, 2);
  assert.equal(exchangeOf({...span, params: ['http://h/c/']}, rows), undefined);
  assert.equal(exchangeOf({...span, start: START + 5000, end: START + 6000}, rows), undefined);
  assert.equal(exchangeOf({...span, name: 'logout()'}, rows), undefined);
});
