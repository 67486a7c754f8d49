// What one session did, from its identity to its outcomes.

import {checkpointsOf, LANE_NAMES, laneOf, screensOf, sessionsOf} from './sessions.js';
import {Empty, html, plain, Result, Sided, Table, useMemo, useStore} from './ui.js';
import {callName, clock, many, resultOf} from './words.js';

const nameOf = (session) => plain(session.users.join(', ') || 'nobody');

export function SessionsView({id}) {
  const {shown, version} = useStore();
  const sessions = useMemo(() => sessionsOf(shown), [version, shown]);
  if (sessions.length === 0) {
    return html`<${Empty} title="No session yet"><p>Every call of the library carries its session; calls made by hand need <code>session.idSession</code>.</p></${Empty}>`;
  }
  const current = sessions.find((session) => session.id === id) ?? sessions[0];
  const items = sessions.map((session) => ({
    hash: '#/s/' + encodeURIComponent(session.id), title: nameOf(session), isCurrent: session === current,
    says: html`${clock(session.from)} \u00b7 ${many(session.rows.length, 'call')} ${session.bad > 0 && html`\u00b7 <span class="result bad">${session.bad} bad</span>`}`}));
  return html`<${Sided} title=${many(sessions.length, 'session')} items=${items}><${Session} session=${current} key=${current.id} /></${Sided}>`;
}

function Session({session}) {
  const {rows} = session;
  const {list, strays} = useMemo(() => checkpointsOf(rows), [session]);
  const screens = useMemo(() => screensOf(rows), [session]);
  const identity = rows.filter((row) => laneOf(row) === 'identity');
  const bad = rows.filter((row) => row.fault || row.status !== 200 || row.faultInjected);
  const facts = [['session', session.id], ['device', session.device ?? 'none'], ['library', session.app ?? 'unknown'], ['time', clock(session.from) + '\u2013' + clock(session.to)]];
  const outcomeOf = ({id, facts: {outcome, transaction}}) => html`\u2192 <a href=${'#/x/' + id}>${plain(String(outcome))}</a> ${transaction && html`<code>${plain(transaction)}</code>`}`;
  const checkpoints = [
    ...list.map(({row, wantsVerdict, outcome, says}) => [clock(row.time, true), html`<${Call} row=${row} />`, wantsVerdict ? html`<${Result} row=${row} />` : 'only reported',
                                                        outcome && outcomeOf(outcome), says]),
    ...strays.map((row) => [clock(row.time, true), html`<${Call} row=${row} />`, '', outcomeOf(row), 'the verdict that it is about is not here'])];
  return html`<div class="page"><h1>${nameOf(session)}</h1><dl class="facts">${facts.map(([name, value]) => html`<dt>${name}</dt><dd><code>${plain(value)}</code></dd>`)}</dl>
    <${Lanes} session=${session} />
    <h2>Identity</h2><p class="chips">${identity.map((row) => html`<${Call} row=${row} mark=${resultOf(row).kind === 'ok' ? ' \u2714' : ' \u2716'} />`)}${identity.length === 0 && 'none in what is kept'}</p>
    <h2>Checkpoints</h2><${Table} className="wide" columns=${['time', 'checkpoint', 'verdict', 'outcome', 'says']} rows=${checkpoints} />
    ${screens.length > 0 && html`<h2>Screens</h2><p class="chips">${screens.map((screen) => html`<span class="chip">\u2595 ${plain(screen.screen)} <span class="dim">${screen.screenId}
      ${screen.from !== undefined && screen.to === undefined && ' no end'}</span>
      ${screen.rows.filter((row) => row.path.endsWith('/BiometricData/')).map((row) => html` <a href=${'#/bio/' + row.id}>plots</a>`)}</span>`)}</p>`}
    ${bad.length > 0 && html`<h2>Errors</h2><ul class="plain">${bad.map((row) => html`<li><${Call} row=${row} /><${Result} row=${row} />
      <span>${row.fault ? plain(row.fault) : row.faultInjected && `by the fault \u201c${row.faultInjected}\u201d`}</span></li>`)}</ul>`}</div>`;
}

function Call({row, mark}) {
  return html`<a href=${'#/x/' + row.id}>${callName(row)}${mark}</a>`;
}

// Every call of the session over its time, a lane for each kind.
function Lanes({session}) {
  const used = LANE_NAMES.filter((lane) => session.rows.some((row) => laneOf(row) === lane));
  const span = Math.max(1, session.to - session.from);
  const x = (time) => 90 + (time - session.from) / span * 690;
  const y = (lane) => used.indexOf(lane) * 26 + 17;
  const height = used.length * 26 + 20;
  return html`<svg class="lanes" viewBox=${`0 0 800 ${height}`} role="group" aria-label=${`Calls of the session over ${span} milliseconds`}>
    ${used.map((lane) => html`<text x="0" y=${y(lane) + 4}>${lane}</text><line x1="90" x2="780" y1=${y(lane)} y2=${y(lane)} />`)}
    ${session.rows.map((row) => {
      const {kind, mark} = resultOf(row);
      const at = {x: x(row.received), y: y(laneOf(row)) + 4.5};
      return html`<a href=${'#/x/' + row.id} tabindex="-1"><title>${callName(row)} ${clock(row.time, true)}</title>
        <text class=${kind} text-anchor="middle" style=${{fontSize: '13px'}} ...${at}>${mark || '\u25cf'}</text></a>`;
    })}
    <text x="90" y=${height - 2}>${clock(session.from, true)}</text><text x="780" y=${height - 2} text-anchor="end">+${span} ms</text></svg>`;
}
