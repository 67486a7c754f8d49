import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {test} from 'node:test';
import {curlCommand, isInline, quote} from './curl.js';
import {differences, placeText, VOLATILE} from './diff.js';
import {faultText, placeOfFault, ruleForCall, ruleText} from './rules_text.js';
import {checkpointsOf, screensOf, sessionsOf} from './sessions.js';
import {EventReader} from './sse.js';
import {histogram, latencies, percentile, problems} from './stats.js';

test('a quoted text is one word of the shell, whatever it holds', () => {
  for (const text of ["it's", '$(id) `id` \\ "x" !!', "''", 'a\nb', '-n', '']) {
    assert.equal(execFileSync('sh', ['-c', 'printf %s ' + quote(text)]).toString(), text);
  }
});

test('a body stands in the command only where a command line can hold it', () => {
  const bytes = (text) => new TextEncoder().encode(text);
  assert.ok(isInline(bytes('{"a":"\u00e9"}')));
  assert.ok(!isInline(Uint8Array.of(0x7b, 0xff)));
  assert.ok(!isInline(bytes('a\0b')));
  assert.ok(!isInline(bytes('x'.repeat(100_001))));
  const command = curlCommand({baseUrl: 'http://h:1/', path: '//a/', method: 'POST', contentType: '', body: Uint8Array.of(255), file: 'b.bin'});
  assert.equal(command, "curl -sS -g --path-as-is -X 'POST' 'http://h:1//a/' -H 'Content-Type:' --data-binary '@b.bin'");
});

test('events are handed on whole, however the stream is cut', () => {
  const text = ': hello\n\nevent: rows\r\nid: r:1\ndata: {"a":\ndata:  "\u00e9"}\n\nid: r:2\ndata: x\n\nevent: rows\nid: r:3\ndata: lost';
  const bytes = new TextEncoder().encode(text);
  const expected = [{name: 'rows', id: 'r:1', data: '{"a":\n "\u00e9"}'}, {name: 'message', id: 'r:2', data: 'x'}];
  for (let size = 1; size <= bytes.length; size += 1) {
    const got = [];
    const reader = new EventReader((event) => got.push(event));
    for (let at = 0; at < bytes.length; at += size) reader.push(bytes.subarray(at, at + size));
    assert.deepEqual(got, expected, 'pieces of ' + size);
  }
});

test('bodies differ by key, as they are written', () => {
  const left = '{"keys":{"requestID":"1","user_id":"a"},"list":[1,2],"n":1.0,"only":{}}';
  const right = '{"keys":{"requestID":"2","user_id":"a"},"list":[1,3,4],"n":1,"a b":5}';
  const shown = differences(left, right, VOLATILE).map((d) => [placeText(d.place), d.left, d.right]);
  assert.deepEqual(shown, [['list[1]', '2', '3'], ['n', '1.0', '1'], ['only', '{}', undefined], ['list[2]', undefined, '4'], ['["a b"]', undefined, '5']]);
  assert.equal(differences(left, right).length, 6);
  assert.deepEqual(differences(left, left), []);
  assert.deepEqual(differences('no', 'JSON'), [{place: [], left: 'no', right: 'JSON'}]);
});

test('rules and faults are told in words, and the place of a fault is found', () => {
  assert.equal(ruleText({checkpoint: 'LOGIN', amountAtLeast: 5, risk: 'HIGH'}), 'checkpoint LOGIN, amountAtLeast 5 \u2192 HIGH');
  assert.equal(ruleText({risk: 'LOW'}), 'always \u2192 LOW');
  assert.deepEqual(ruleForCall({facts: {user: 'a', checkpoint: 'LOGIN'}}, 'HIGH'), {user: 'a', checkpoint: 'LOGIN', risk: 'HIGH'});
  assert.equal(faultText({path: '*', latency: 3000, times: 2, name: 'slow'}), 'slow: latency 3000 on * (times 2)');
  assert.deepEqual(placeOfFault('[2].risk: "x" is no risk level'), {index: 2, key: 'risk', reason: '"x" is no risk level'});
  assert.deepEqual(placeOfFault('[0]: expected an object'), {index: 0, key: undefined, reason: 'expected an object'});
  assert.equal(placeOfFault('expected an array').index, undefined);
});

test('a percentile is a value that was measured', () => {
  const values = Array.from({length: 100}, (_, i) => 100 - i);
  assert.deepEqual([percentile(values, 0.5), percentile(values, 0.95), percentile([7], 0.95), percentile([], 0.5)], [50, 95, 7, undefined]);
  assert.deepEqual(latencies([{time: 1, took: 1000}, {time: 2}, {time: 3, took: 3000}]).map((l) => [l.ms, l.median, l.p95]), [[1, 1, 1], [3, 1, 3]]);
  const chart = histogram([{time: 0, status: 200}, {time: 99, status: 400, fault: 'x'}], 10);
  assert.deepEqual(chart.bins.map((bin) => [bin.calls, bin.bad]), [[1, 0], ...Array(8).fill([0, 0]), [1, 1]]);
});

test('problems are grouped by what was wrong where', () => {
  const refused = (id, place, reason) => ({id, path: '/a', fault: 'x', violations: [{place, reason}]});
  const groups = problems([refused(1, ['k'], 'expected a text, got 1'), refused(2, ['k'], 'expected a text, got 2'), refused(3, ['j'], 'missing'), {id: 4, path: '/b'},
                           {id: 5, path: '/c', fault: 'no service at "/c"'}]);
  assert.deepEqual(groups.map((g) => [g.path, g.place, g.reason, g.rows.length]),
                   [['/a', ['k'], 'expected a text', 2], ['/c', null, 'no service at "/c"', 1], ['/a', ['j'], 'missing', 1]]);
});

test('a session joins verdicts with the outcomes that name them', () => {
  const at = (id, path, facts, more = {}) => ({id, received: id, path: '/s' + path, status: 200, facts: {session: 'S', ...facts}, ...more});
  const rows = [at(1, '/GetCheckpointRisk/', {requestID: 'R1', user: 'a'}, {risk: 0}), at(2, '/GetCheckpointRisk/', {requestID: 'R2', user: 'b'}, {status: 503}),
                at(3, '/UpdateTransactionResult/', {updates: 'R1', outcome: 'APPROVED'}), at(4, '/UpdateTransactionResult/', {updates: 'R9', outcome: 'DENIED'}),
                at(5, '/SendCheckpointEvent/', {requestID: 'R3'}), at(6, '/GetCheckpointRisk/', {requestID: 'R4'}, {risk: 1}), {id: 7, received: 7, path: '/x', facts: {}}];
  const [session, ...others] = sessionsOf(rows);
  assert.deepEqual([others.length, session.users, session.rows.length, session.bad], [0, ['a', 'b'], 6, 1]);
  const {list, strays} = checkpointsOf(session.rows);
  assert.deepEqual(list.map((c) => [c.row.id, c.outcome?.id, c.says]),
                   [[1, 3, ''], [2, undefined, 'no verdict reached the application'], [5, undefined, ''], [6, undefined, 'no outcome was reported']]);
  assert.deepEqual(strays.map((row) => row.id), [4]);
  const screen = (id, action, at) => ({id, facts: {screen: 'PINCODE', screenId: 7, action, at}});
  const screens = screensOf([screen(1, 'START', 10), screen(2, undefined, undefined), screen(3, 'END', 20), screen(4, 'START', 30)]);
  assert.deepEqual(screens.map((s) => [s.from, s.to, s.rows.length]), [[10, 20, 3], [30, undefined, 1]]);
});
