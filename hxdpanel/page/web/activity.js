// What the panel did, and what people did to it; newest first, by kind.
import { listen } from './bus.js';
import { button, byId, element, prepend, setText, timeOfDay } from './dom.js';
import { ask } from './server.js';

const LIMIT = 400;
const section = byId('activity');
const list = section.querySelector('.feed');
const capturing = [];  // items that wait for their picture
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

// A panel that tries again and again would push everything else out of sight: the command that it
// repeats is counted in its line.
function isRepeated(time, kind, text) {
  const item = list.firstElementChild;
  if (kind !== 'command' || item?.dataset.kind !== kind || item.children[2].textContent !== text) return false;
  item.dataset.times = Number(item.dataset.times ?? 1) + 1;
  setText(item.firstElementChild, timeOfDay(time));
  setText(item.children[3] ?? item.appendChild(element('small')), ` × ${item.dataset.times}`);
  return true;
}

function add(time, kind, text) {
  addKind(kind);
  const item = element('li', { 'data-kind': kind, hidden: kinds.get(kind).getAttribute('aria-pressed') !== 'true' },
    element('time', { dateTime: time }, timeOfDay(time)), element('i', {}, kind), element('span', {}, text));
  prepend(list, item, LIMIT);
  return item;
}

function picture(name) {
  const address = `/api/captures/${encodeURIComponent(name)}`;
  return element('a', { href: address, target: '_blank', className: 'capture' },
    element('img', { src: address, alt: `Screen capture ${name}`, loading: 'lazy' }));
}

// The file is there when the command is done; pictures that were there before belong to earlier lines.
async function showPictures() {
  const items = capturing.splice(0);
  if (items.length === 0) return;
  const { captures } = await ask('/api/captures').catch(() => ({ captures: [] }));
  captures.slice(-items.length).forEach((name, i) => items[i].append(picture(name)));
}

export function start() {
  listen('did', ({ time, kind, text }) => {
    if (isRepeated(time, kind, text)) return;
    const item = add(time, kind, text);
    if (kind === 'capture') capturing.push(item);
  });
  listen('acted', showPictures);
  listen('acted', ({ time, by, line, status }) =>
    add(time, by, `${line}${status.code ? `  status ${status.code} (${status.meaning})` : ''}`));
  listen('restarted', ({ time, why }) => add(time, 'restart', why));
}
