// What the panel did, and what people did to it; newest first, by kind.
import { listen } from './bus.js';
import { button, byId, element, prepend, timeOfDay } from './dom.js';

const LIMIT = 400;
const section = byId('activity');
const list = section.querySelector('.feed');
const kinds = new Map();  // kind: its button

function addKind(kind) {
  if (kinds.has(kind)) return;
  const toggle = button(kind, () => {
    const isShown = toggle.getAttribute('aria-pressed') !== 'true';
    toggle.setAttribute('aria-pressed', isShown);
    list.querySelectorAll(`[data-kind="${CSS.escape(kind)}"]`).forEach(item => { item.hidden = !isShown; });
  }, { 'aria-pressed': 'true' });
  kinds.set(kind, toggle);
  byId('activity-kinds').append(toggle);
}

function add(time, kind, text, ...more) {
  addKind(kind);
  const item = element('li', { 'data-kind': kind, hidden: kinds.get(kind).getAttribute('aria-pressed') !== 'true' },
    element('time', { dateTime: time }, timeOfDay(time)), element('i', {}, kind), element('span', {}, text), ...more);
  prepend(list, item, LIMIT);
}

function capture(name) {
  const address = `/api/captures/${encodeURIComponent(name)}`;
  return element('a', { href: address, target: '_blank', className: 'capture' },
    element('img', { src: address, alt: `Screen capture ${name}`, loading: 'lazy' }));
}

export function start() {
  listen('did', ({ time, kind, text, picture }) => add(time, kind, text, ...(picture ? [capture(picture)] : [])));
  listen('acted', ({ time, by, line, status }) =>
    add(time, by, `${line}${status.code ? `  status ${status.code} (${status.meaning})` : ''}`));
  listen('restarted', ({ time, why }) => add(time, 'restart', why));
}
