// Line plots over time, by uPlot, which the page loads as a classic script.

import {html, useLayoutEffect, useRef, useStore} from './ui.js';

// A colour of the style sheet, as the canvas wants it: light or dark is decided.
function colour(name) {
  document.body.style.accentColor = `var(${name})`;
  const {accentColor} = getComputedStyle(document.body);
  document.body.style.accentColor = '';
  return accentColor;
}

// `lines` are [{label, colour}] of the series behind the first, which is x. `bands` are [{from, to}] in x. Plots with the
// same `group` share their cursor. `kind` is 'points' or 'bars' where it is no line.
export function Plot({data, lines, height = 120, unit, group, bands = [], range, kind, label}) {
  const box = useRef(null);
  const {theme} = useStore();
  useLayoutEffect(() => {
    const font = '11px system-ui';
    const thin = {stroke: colour('--line'), width: 1};
    const axis = {stroke: colour('--muted'), grid: thin, ticks: thin, font, labelFont: font, labelSize: 14};
    const width = () => Math.max(200, box.current.clientWidth);
    const plot = new uPlot({
      width: width(), height, cursor: {sync: {key: group}, drag: {x: true, y: false}}, scales: {x: {time: false}, y: range ? {range} : {}},
      axes: [{...axis, size: 28}, {...axis, size: 56, label: unit}],
      series: [{label: 'ms'}, ...lines.map((line) => ({
        label: line.label, stroke: colour(line.colour), width: 1.25, spanGaps: false, points: {show: kind === 'points'},
        paths: kind === 'bars' ? uPlot.paths.bars({size: [0.8, 12]}) : kind === 'points' ? () => null : undefined}))],
      hooks: {drawClear: [({ctx, bbox, valToPos}) => {
        ctx.fillStyle = colour('--band');
        for (const {from, to} of bands) {
          const left = Math.max(bbox.left, valToPos(from, 'x', true));
          ctx.fillRect(left, bbox.top, Math.max(1, Math.min(bbox.left + bbox.width, valToPos(to, 'x', true)) - left), bbox.height);
        }
      }]},
    }, data, box.current);
    box.current.plot = plot;
    const watcher = new ResizeObserver(() => plot.setSize({width: width(), height}));
    watcher.observe(box.current);
    return () => {
      watcher.disconnect();
      plot.destroy();
    };
  }, [data, theme, bands]);
  return html`<div class="uplotbox" ref=${box} role="img" aria-label=${label}></div>`;
}
