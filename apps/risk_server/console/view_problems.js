// Everything that was refused, by what was wrong where.

import {placeText} from './diff.js';
import {problems} from './stats.js';
import {Empty, html, plain, Table, useMemo, useStore} from './ui.js';
import {clock, many} from './words.js';

export function ProblemsView() {
  const {shown, version} = useStore();
  const groups = useMemo(() => problems(shown), [version, shown]);
  if (groups.length === 0) {
    return html`<${Empty} title="Nothing was refused"><p>Calls that break the contract are listed here. <code>risk_server --check LOG</code> does the same for a capture.</p></${Empty}>`;
  }
  return html`<div class="page"><h1>${many(groups.length, 'problem')}</h1><${Table} className="wide" columns=${['calls', 'call', 'place', 'what is wrong', 'last', '']} rows=${groups.map(({path, place, reason, rows}) => [
    rows.length, plain(path), html`<code>${place && plain(placeText(place))}</code>`, plain(reason), clock(rows.at(-1).time), html`<a href=${'#/x/' + rows.at(-1).id}>#${rows.at(-1).id}</a>`])} /></div>`;
}
