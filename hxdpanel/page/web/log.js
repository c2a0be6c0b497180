// Lines of the driver and the stand-ins, newest first, from a level on.
import { calmed, listen } from './bus.js';
import { byId, element, prepend, setText, timeOfDay } from './dom.js';

const LIMIT = 2000;
const LEVELS = ['trace', 'output', 'info', 'warning', 'error'];
const FIRST_LEVEL = 'output';  // the trace of each call would cover the rest
const list = byId('log').querySelector('.feed');

function isShown(item) {
  return LEVELS.indexOf(item.dataset.level) >= LEVELS.indexOf(byId('log-level').value) &&
    item.textContent.toLowerCase().includes(byId('log-filter').value.toLowerCase());
}

const showCount = calmed(() => setText(byId('log-count'),
  `${list.querySelectorAll('li:not([hidden])').length} of ${list.childElementCount} lines`), 200);

function filter() {
  for (const item of list.children) item.hidden = !isShown(item);
  showCount();
}

function add({ time, level, text }) {
  if (text === '') return;  // the driver parts its lines with empty ones
  const item = element('li', { 'data-level': LEVELS.includes(level) ? level : 'output' },
    element('time', { dateTime: time }, timeOfDay(time)), element('i', {}, level), element('span', {}, text));
  item.hidden = !isShown(item);
  prepend(list, item, LIMIT);
  showCount();
}

export function start() {
  byId('log-level').append(...LEVELS.map(level => new Option(level, level, level === FIRST_LEVEL, level === FIRST_LEVEL)));
  byId('log-level').addEventListener('change', filter);
  byId('log-filter').addEventListener('input', filter);
  listen('log', add);
}
