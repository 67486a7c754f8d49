// Exchanges as the sessions they belong to, and what belongs together in one.

// The kinds of calls; whatever is none of them is 'other'.
const LANES = {
  identity: ['GetDeviceID', 'getSdkConfiguration', 'SendSessionData'],
  checkpoints: ['GetCheckpointRisk', 'SendCheckpointEvent', 'UpdateTransactionResult'],
  screens: ['sendScreenListenerEvent', 'BiometricData', 'SendBiometricImage', 'ActivityMap', 'ThirdPartyCacheEnrichment'],
  reports: ['TracingData', 'ErrorLogging', 'CrashLogging'], other: [''],
};
export const LANE_NAMES = Object.keys(LANES);

export function laneOf({path}) {
  return LANE_NAMES.find((lane) => LANES[lane].some((service) => path.endsWith(service && `/${service}/`)));
}

// [{id, user, users, device, app, rows, from, to, bad}], the newest first. A session's calls may change their user.
export function sessionsOf(rows) {
  const sessions = new Map();
  for (const row of rows) {
    const id = row.facts?.session;
    if (id === undefined) continue;
    const session = sessions.get(id) ?? {id, users: [], rows: [], bad: 0};
    session.rows.push(row);
    session.device = row.facts.device ?? session.device;
    session.app = row.facts.app ?? session.app;
    if (row.facts.user && !session.users.includes(row.facts.user)) session.users.push(row.facts.user);
    if (row.fault || row.status !== 200) session.bad += 1;
    sessions.set(id, session);
  }
  const list = [...sessions.values()];
  for (const session of list) {
    session.rows.sort((a, b) => a.received - b.received || a.id - b.id);
    session.from = session.rows[0].received;
    session.to = session.rows.at(-1).received;
  }
  return list.sort((a, b) => b.to - a.to);
}

// The checkpoints of a session with what came of them: [{row, verdict, outcome, says}]. An outcome names the request
// whose verdict it is about.
export function checkpointsOf(rows) {
  const outcomes = rows.filter((row) => row.facts?.updates);
  const asked = rows.filter((row) => laneOf(row) === 'checkpoints' && !outcomes.includes(row));
  const list = asked.map((row) => {
    const wantsVerdict = row.path.endsWith('/GetCheckpointRisk/');
    const outcome = outcomes.find((o) => o.facts.updates === row.facts.requestID);
    const arrived = row.status === 200 && !row.fault && (row.delivery ?? 'whole') === 'whole';
    const says = !wantsVerdict ? '' : !arrived ? 'no verdict reached the application' : outcome ? '' : 'no outcome was reported';
    return {row, wantsVerdict, outcome, says};
  });
  const known = new Set(asked.map((row) => row.facts.requestID));
  return {list, strays: outcomes.filter((o) => !known.has(o.facts.updates))};
}

// Screens with their start and end events: [{screen, screenId, from, to, rows}].
export function screensOf(rows) {
  const screens = [];
  for (const row of rows) {
    const {screen, screenId, action, at} = row.facts ?? {};
    if (screen === undefined) continue;
    const isSame = (s) => s.screen === screen && String(s.screenId) === String(screenId);
    const found = screens.findLast((s) => isSame(s) && (action !== 'START' || s.from === undefined));
    const one = found ?? {screen, screenId, rows: []};
    if (!found) screens.push(one);
    one.rows.push(row);
    if (action === 'START') one.from = at;
    if (action === 'END') one.to = at;
  }
  return screens;
}
