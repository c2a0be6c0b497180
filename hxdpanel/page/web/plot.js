// One graph: the channels of one unit over time, drawn by dygraphs. Its readings are drawn as steps,
// since a value holds until the next one.
import { element, setText } from './dom.js';
import { marks } from './readings.js';

const HEIGHT = 92;
// Only what draws: dygraphs' own legend would need styles that the page does not allow.
const PLUGINS = () => [Dygraph.Plugins.Axes, Dygraph.Plugins.Grid];

const colour = name => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

// "0..1" is the range itself; a percentage has one, too.
function valueRange(unit) {
  const ends = unit === '%' ? ['', 0, 100] : /^(\d+)\.\.(\d+)$/.exec(unit);
  if (!ends) return null;
  const [low, high] = [Number(ends[1]), Number(ends[2])];
  return [low - (high - low) * 0.03, high + (high - low) * 0.05];
}

function drawMarks(canvas, area, graph) {
  const [from, to] = graph.xAxisRange();
  for (const mark of marks) {
    if (mark.time < from || mark.time > to) continue;
    canvas.fillStyle = colour(mark.good ? '--mark' : '--bad');
    canvas.fillRect(Math.round(graph.toDomXCoord(mark.time)), area.y, 1, area.h);
  }
}

export class Plot {
  // onZoom(from, to), onUnzoom() and onPoint(row of the data, or null) are told what the user does.
  constructor(unit, channels, { onZoom, onUnzoom, onPoint, onRemove, onKey }) {
    this.channels = channels;
    this.legend = channels.map((channel, i) => ({ channel, value: element('b', {}), colour: colour(`--series-${i % 6 + 1}`) }));
    this.canvas = element('div', { className: 'graph', tabIndex: 0, role: 'application',
      'aria-label': `${channels.map(channel => channel.name).join(', ')} over time`, 'aria-describedby': 'plot-keys' });
    this.canvas.style.height = `${HEIGHT}px`;
    this.canvas.addEventListener('keydown', onKey);
    this.root = element('div', { className: 'plot' },
      element('div', { className: 'legend' }, ...this.legend.map(entry => this.legendItem(entry, unit, onRemove))),
      this.canvas);
    this.unit = unit;
    this.handlers = { onZoom, onUnzoom, onPoint };
  }

  legendItem({ channel, value, colour: fill }, unit, onRemove) {
    const swatch = element('i', { 'aria-hidden': true });
    swatch.style.background = fill;
    return element('span', {}, swatch, `${channel.number} ${channel.name} `, value, unit ? ` ${unit}` : '',
      element('button', { type: 'button', className: 'remove', 'aria-label': `Plot ${channel.name} no longer`, onclick: () => onRemove(channel.number) }, '×'));
  }

  // Rows of [Date, value...]; the graph is made with the first ones, when it has its place.
  draw(rows, window) {
    if (this.graph) this.graph.updateOptions({ file: rows, dateWindow: window });
    else this.graph = this.make(rows, window);
  }

  make(rows, window) {
    const { onZoom, onUnzoom, onPoint } = this.handlers;
    Dygraph.PLUGINS = PLUGINS();
    const graph = new Dygraph(this.canvas, rows, {
      labels: ['time', ...this.channels.map(channel => String(channel.number))],
      colors: this.legend.map(entry => entry.colour),
      dateWindow: window,
      stepPlot: true,
      strokeWidth: 1.5,
      valueRange: valueRange(this.unit),
      yRangePad: 4,
      axisLabelFontSize: 11,
      axisLineColor: colour('--line'),
      gridLineColor: colour('--line'),
      axes: { y: { axisLabelWidth: 44, pixelsPerLabel: 24 }, x: { pixelsPerLabel: 80 } },
      rightGap: 8,
      underlayCallback: drawMarks,
      highlightCallback: (event, x, points, row) => onPoint(row),
      unhighlightCallback: () => onPoint(null),
      zoomCallback: (from, to) => onZoom(from, to),
    });
    // Only a drag along the time axis means anything here: the values' axis has its range.
    graph.updateOptions({ interactionModel: { ...Dygraph.defaultInteractionModel, dblclick: onUnzoom } }, true);
    return graph;
  }

  select(row) {
    if (row === null || row < 0) this.graph?.clearSelection();
    else this.graph?.setSelection(row);
  }

  showValues(values, isPointed) {
    this.root.classList.toggle('at', isPointed);
    for (const { channel, value } of this.legend) setText(value, String(values?.get(channel.number) ?? '–'));
  }

  get valuesText() {
    return this.legend.map(({ channel, value }) => `${channel.name} ${value.textContent}`).join(', ');
  }

  end() {
    this.graph?.destroy();
    this.root.remove();
  }
}
