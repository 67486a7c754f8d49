import assert from 'node:assert/strict';
import {test} from 'node:test';
import {matches, parseQuery} from './query.js';

const ROWS = [
  {id: 1, path: '/s/GetDeviceID/', status: 200, took: 900, facts: {user: 'noor', session: 'F2F0-1'}},
  {id: 2, path: '/s/GetCheckpointRisk/', status: 200, took: 120_000, risk: 1, rule: 5, facts: {user: 'Noor B', checkpoint: 'LOGIN'}},
  {id: 3, path: '/s/GetCheckpointRisk/', status: 400, took: 1000, fault: 'keys: missing', delivery: 'whole', facts: {}},
  {id: 4, path: '/s/GetCheckpointRisk/', status: 503, risk: 3, faultInjected: 'night', delivery: 'reset', facts: {user: 'eve'}},
];
const left = (line, found) => ROWS.filter((row) => matches(row, parseQuery(line), found)).map((row) => row.id).join('');

test('every word of the filter must hold', () => {
  const cases = {
    '': '1234', 'path:Risk': '234', 'user:noor': '12', 'user:"noor b"': '2', 'path:Risk user:noor': '2', 'status:503': '4', 'risk>=MEDIUM': '24',
    'risk:very_high': '4', 'risk<high': '2', 'ms>100': '2', 'ms<=1': '13', 'rule:6': '2', 'is:refused': '3', 'is:fault': '4', 'is:lost': '4',
    'is:verdict': '24', '-is:verdict': '13', '-path:Risk': '1', 'checkpoint:log': '2', 'session:f2': '1', 'id:3': '3', missing: '3', '"night"': '4', 'fault:keys': '3',
  };
  for (const [line, ids] of Object.entries(cases)) assert.equal(left(line), ids, line);
});

test('a bare text also counts where a body holds it', () => {
  const found = new Map([['4242', new Set([1])]]);
  assert.equal(left('4242', found), '1');
  assert.equal(left('-4242', found), '234');
  assert.deepEqual(parseQuery('"a b" c user:x').texts, ['a b', 'c']);
});

test('what is no filter is told and filters nothing', () => {
  for (const line of ['risk>=NOPE', 'is:odd', 'status:', 'user>1', 'nofield:3']) {
    const query = parseQuery(line);
    assert.equal(query.error, `"${line}" is no filter`);
    assert.equal(query.terms.length, 0);
  }
});
