// The section of plots: which channels, which stretch of time, the marks above, the CSV.
import { listen, state } from './bus.js';
import { saveCsv } from './csv.js';
import { button, byId, element, setText } from './dom.js';
import { Plot } from './plot.js';
import { actsBefore, between, marks, readingAt, serverNow, times, values } from './readings.js';

const FIRST_CHOICE = [10, 11, 27, 29, 30, 31, 32];
const CHOICE_KEY = 'hxdpanel.plots';
const SPANS = [['1 min', 60], ['5 min', 300], ['30 min', 1800], ['4 h', 14400], ['all', Infinity]];
const DRAW_MS = 500;

let chosen = new Set(JSON.parse(localStorage.getItem(CHOICE_KEY)) ?? FIRST_CHOICE);
let span = 60;  // seconds that are shown while the plots follow
let zoomed = null;  // [from, to] while they do not
let plots = [];
let pointed = null;  // the time of the reading at which the pointer stands, or the keyboard's point
let first = 0;  // the reading with which the drawn ones begin
let drawn = 0;

const numeric = () => (state('help')?.channels ?? []).filter(channel => channel.type === 'number');

function shownWindow() {
  if (zoomed) return zoomed;
  const now = serverNow();
  return [span === Infinity ? times[0] - 1000 : now - span * 1000, now];
}

function choose(number, isChosen) {
  if (isChosen) chosen.add(number);
  else chosen.delete(number);
  localStorage.setItem(CHOICE_KEY, JSON.stringify([...chosen]));
  build();
}

// One graph for each unit, in the order of the channels.
function build() {
  plots.forEach(plot => plot.end());
  const units = Map.groupBy(numeric().filter(channel => chosen.has(channel.number)), channel => channel.unit);
  plots = [...units].map(([unit, channels]) => new Plot(unit, channels, {
    onZoom: (from, to) => zoom([from, to]),
    onUnzoom: () => zoom(null),
    onPoint: point,
    onRemove: number => choose(number, false),
    onKey: key,
  }));
  byId('graphs').replaceChildren(...plots.map(plot => plot.root));
  const rest = numeric().filter(channel => !chosen.has(channel.number));
  byId('plot-add').replaceChildren(new Option('channel…', ''),
    ...rest.map(channel => new Option(`${channel.number} ${channel.name}`, channel.number)));
  draw();
}

function zoom(window) {
  zoomed = window;
  showSpan();
  draw();
}

const WINDOW_KEYS = {
  PageUp: ([from, to], step) => [from - step, to - step],
  PageDown: ([from, to], step) => [from + step, to + step],
  '+': ([from, to], step) => [from + step, to - step],
  '-': ([from, to], step) => [from - step, to + step],
};
const readingAfter = mark => mark && times.find(time => time >= mark.time);
// From the point's time, and how far it moves at least, to the time of another reading.
const POINT_KEYS = {
  ArrowLeft: (at, step) => times.findLast(time => time <= at - step),
  ArrowRight: (at, step) => times.find(time => time >= at + step),
  ArrowUp: at => readingAfter(marks.findLast(mark => readingAfter(mark) < at)),
  ArrowDown: at => readingAfter(marks.find(mark => mark.time > at)),
};

function key(event) {
  const [from, to] = shownWindow();
  if (event.key === '0') release();
  else if (WINDOW_KEYS[event.key]) zoom(WINDOW_KEYS[event.key]([from, to], (to - from) / 5));
  else if (POINT_KEYS[event.key]) pointWithin(POINT_KEYS[event.key](pointed ?? Infinity, (to - from) / 100));
  else return;
  event.preventDefault();
}

function release() {
  pointed = null;
  zoom(null);
}

// The window goes with the point.
function pointWithin(time) {
  if (time === undefined) return;
  const [from, to] = shownWindow();
  const beyond = Math.min(time - from, 0) || Math.max(time - to, 0);
  pointed = time;
  if (beyond !== 0) zoom([from + beyond, to + beyond]);
  showValues();
}

function point(row) {
  pointed = row === null ? null : times[first + row];
  showValues();
}

// Those at the point, in all graphs, or the newest; and in words what else is known of the point.
function showValues() {
  const index = pointed === null ? times.length - 1 : readingAt(pointed);
  for (const plot of plots) {
    plot.select(pointed === null ? null : index - first);
    plot.showValues(values[index], pointed !== null);
  }
  const focused = plots.find(plot => plot.canvas === document.activeElement);
  setText(byId('plot-point'), pointed === null ? '' : [new Date(pointed).toTimeString().slice(0, 8),
    ...(focused ? [focused.valuesText] : []), ...actsBefore(index).map(act => act.text)].join('; '));
}

function draw() {
  drawn = Date.now();
  if (times.length === 0 || !globalThis.Dygraph) return;
  const window = shownWindow();
  const [begin, end] = between(...window);
  first = begin;
  for (const plot of plots) {
    const rows = [];
    for (let i = begin; i < end; ++i)
      rows.push([new Date(times[i]), ...plot.channels.map(channel => values[i].get(channel.number) ?? null)]);
    plot.draw(rows, window);
  }
  showMarks(window);
  showValues();
}

// Above the graphs, where the pointer tells what was done; the keyboard's point tells it in words.
function showMarks([from, to]) {
  const graph = plots[0]?.graph;
  const shown = graph ? marks.filter(({ time }) => time >= from && time <= to).slice(-200) : [];
  byId('marks').replaceChildren(...shown.map(mark => {
    const tick = element('i', { title: mark.text, 'data-good': mark.good });
    tick.style.left = `${graph.toDomXCoord(mark.time)}px`;
    return tick;
  }));
}

function showSpan() {
  for (const one of byId('spans').children)
    one.setAttribute('aria-pressed', zoomed === null && Number(one.dataset.span) === span);
}

function sampled() {
  if (document.hidden || (zoomed && zoomed[1] < times.at(-1))) return;
  if (Date.now() - drawn >= DRAW_MS) draw();
}

function save() {
  saveCsv(numeric().filter(channel => chosen.has(channel.number)), ...between(...shownWindow()));
}

export function start() {
  byId('spans').append(...SPANS.map(([text, seconds]) => button(text, () => {
    span = seconds;
    zoom(null);
  }, { 'data-span': seconds })));
  showSpan();
  byId('plot-add').onchange = event => event.target.value && choose(Number(event.target.value), true);
  byId('csv').onclick = save;
  listen('help', build);
  listen('sampled', sampled);
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', build);
  window.addEventListener('resize', () => plots.forEach(plot => plot.graph?.resize()));
  document.addEventListener('visibilitychange', draw);
}
