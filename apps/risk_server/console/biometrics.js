// What a biometric upload says: motion rows over time, and touches.
//
// The wire has rows of motion and a list of times beside them, and the same for touches. A touch outside every view has no
// time, so the lists may differ in length, and then nothing tells which time is whose: no pairing is guessed.

// Columns of a motion row. The last three are there in rows that were made in debug mode.
const MOTION = [{title: 'Acceleration', unit: 'g', from: 0}, {title: 'Rotation', unit: 'rad/s', from: 3}, {title: 'Gravity', unit: 'g', from: 6},
                {title: 'Magnetic field', unit: '\u00b5T', from: 9}];
export const MAX_INTERVAL = 250;  // milliseconds; sampling stopped in between, so no line is drawn

const BEGAN = 1;
const ENDED = -1;

// Of the parsed "bio_sensor_event_data".
export function decode({sensorsData = [], sensorsTS = [], eventList = [], eventListTS = [], actionType, actionId}) {
  return {motion: decodeMotion(sensorsData, sensorsTS), touch: decodeTouch(eventList, eventListTS), screen: actionType, screenId: actionId};
}

function decodeMotion(rows, stamps) {
  const isTimed = rows.length === stamps.length;
  const times = rows.map((_, index) => (isTimed ? stamps[index][0] : index));
  return {rows, times, isTimed, count: rows.length, timeCount: stamps.length, columns: Math.max(0, ...rows.map((row) => row.length)),
          intervals: isTimed ? times.slice(1).map((time, index) => time - times[index]) : []};
}

export function groupsOf(motion) {
  return MOTION.filter((group) => group.from < motion.columns);
}

// One plot's data: [times, x, y, z], with a hole where sampling stopped. Times are milliseconds since the first.
export function series({rows, times, intervals}, {from}) {
  const data = [[], [], [], []];
  const put = (values) => values.forEach((value, index) => data[index].push(value));
  rows.forEach((row, index) => {
    const time = times[index] - times[0];
    if (intervals[index - 1] > MAX_INTERVAL) put([time - intervals[index - 1] + 1, null, null, null]);
    put([time, ...[0, 1, 2].map((axis) => row[from + axis] ?? null)]);
  });
  return data;
}

function decodeTouch(rows, stamps) {
  const isTimed = rows.length === stamps.length;
  const points = rows.map(([x, y, size, pressure, action], index) => {
    const [time, view] = isTimed ? stamps[index] : [];
    return {x, y, size, pressure, action, time, view};
  });
  return {points, isTimed, timeCount: stamps.length, presses: pressesOf(points)};
}

// A press goes from its first sample to its last. One that is followed by another without an end was cancelled.
function pressesOf(points) {
  const presses = [];
  for (const point of points) {
    if (point.action === BEGAN || presses.length === 0) {
      if (presses.at(-1)?.state === 'open') presses.at(-1).state = 'cancelled';
      presses.push({points: [], state: 'open'});
    }
    presses.at(-1).points.push(point);
    if (point.action === ENDED) presses.at(-1).state = 'ended';
  }
  return presses;
}

// What is missing or broken off, for the reader; nothing when all is there.
export function complaints({motion, touch}) {
  const states = touch.presses.map((press) => press.state);
  return [
    !touch.isTimed && `${touch.points.length} touch rows, but ${touch.timeCount} time rows: touches outside every view have none, so the path is shown without times.`,
    !motion.isTimed && `${motion.count} motion rows, but ${motion.timeCount} times: shown by their number, without times.`,
    states.includes('cancelled') && 'A press was cancelled.', states.includes('open') && 'The last press has no end.',
  ].filter(Boolean);
}
