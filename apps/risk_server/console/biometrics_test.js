import assert from 'node:assert/strict';
import {test} from 'node:test';
import {complaints, decode, groupsOf, series} from './biometrics.js';

const row = (n, columns = 9) => Array.from({length: columns}, (_, i) => n + i / 100);

test('a row of motion is acceleration, rotation, gravity, and in debug mode the magnetic field', () => {
  const nine = decode({sensorsData: [row(1), row(2)], sensorsTS: [[1000], [1010]]}).motion;
  assert.deepEqual(groupsOf(nine).map((group) => group.title), ['Acceleration', 'Rotation', 'Gravity']);
  assert.deepEqual(series(nine, groupsOf(nine)[1]), [[0, 10], [1.03, 2.03], [1.04, 2.04], [1.05, 2.05]]);
  const mixed = decode({sensorsData: [row(1, 12), row(2)], sensorsTS: [[1000], [1010]]}).motion;
  assert.deepEqual(series(mixed, groupsOf(mixed)[3]), [[0, 10], [1.09, null], [1.1, null], [1.11, null]]);
});

test('no line is drawn where sampling stopped', () => {
  const motion = decode({sensorsData: [row(1), row(2), row(3)], sensorsTS: [[0], [250], [501]]}).motion;
  assert.deepEqual(series(motion, groupsOf(motion)[0])[0], [0, 250, 251, 501]);
  assert.deepEqual(series(motion, groupsOf(motion)[0])[1], [1, 2, null, 3]);
  assert.deepEqual(motion.intervals, [250, 251]);
});

test('times are paired with touches only where there is one for each', () => {
  const eventList = [[1, 2, 3, 0.5, 1], [2, 3, 3, 0.5, 0], [3, 4, 3, 0.5, -1]];
  const timed = decode({eventList, eventListTS: [[10, 7], [20, 7], [30, 8]]});
  assert.deepEqual(timed.touch.points.map((p) => [p.time, p.view]), [[10, 7], [20, 7], [30, 8]]);
  assert.deepEqual(complaints(timed), []);
  const untimed = decode({eventList, eventListTS: [[10, 7], [30, 8]]});
  assert.deepEqual(untimed.touch.points.map((p) => p.time), [undefined, undefined, undefined]);
  assert.match(complaints(untimed)[0], /^3 touch rows, but 2 time rows/);
  const motion = decode({sensorsData: [row(1), row(2)], sensorsTS: [[5]]});
  assert.deepEqual(motion.motion.times, [0, 1]);
  assert.match(complaints(motion)[0], /^2 motion rows, but 1 times/);
});

test('a press that is followed by another without an end was cancelled', () => {
  const at = (action) => [0, 0, 1, 1, action];
  const {touch} = decode({eventList: [at(1), at(0), at(1), at(-1), at(1)], eventListTS: []});
  assert.deepEqual(touch.presses.map((press) => `${press.points.length} ${press.state}`), ['2 cancelled', '2 ended', '1 open']);
});

test('an upload without lists is an empty one', () => {
  const {motion, touch} = decode({actionType: 'GENERAL'});
  assert.deepEqual([motion.count, motion.columns, touch.points.length], [0, 0, 0]);
});
