// Input locks, network ports and serial ports.
import { listen } from './bus.js';
import { button, byId, element } from './dom.js';
import { act } from './hardware.js';

const LOCKS = [['panelMouse', 'panel mouse'], ['panelKeyboard', 'panel keyboard'],
  ['remoteMouse', 'remote mouse'], ['remoteKeyboard', 'remote keyboard']];
const shown = new Map();

// Built anew only when something is different, and then the focus stays where it was.
function replace(list, what, build) {
  const text = JSON.stringify(what);
  if (shown.get(list) === text) return;
  shown.set(list, text);
  const focused = list.contains(document.activeElement) ? document.activeElement.dataset.key : null;
  list.replaceChildren(...build());
  if (focused) list.querySelector(`[data-key="${CSS.escape(focused)}"]`)?.focus();
}

function lockItem(locks, [key, name]) {
  const text = locks === null ? 'not known' : locks[key] ? 'locked' : 'free';
  return element('li', { 'data-state': text }, element('span', {}, name), element('b', {}, text));
}

function interfaceItem(port) {
  const line = `${port.plugged ? 'unplug' : 'plug'} ${port.name}`;
  return element('li', { 'data-state': port.plugged ? 'there' : 'gone' },
    element('i', { 'aria-hidden': true }), element('b', {}, port.name),
    element('span', { title: `${port.mac}, gateway ${port.gateway}, mode ${port.mode}` },
      port.plugged ? port.address : 'unplugged', element('small', {}, port.netmask)),
    button(port.plugged ? 'unplug' : 'plug', event => act(event.target, line),
      { 'data-key': port.name, 'aria-label': line }));
}

function comItem(port) {
  const name = `COM${port.port}`;
  const percent = port.percent ?? 50;
  const input = element('input', { type: 'number', min: 0, max: 100, value: percent, 'data-key': name, 'aria-label': `${name}: use in %` });
  const set = async event => { if (!await act(event.target, `com ${port.port} ${input.value}`)) input.value = percent; };
  input.addEventListener('change', set);
  const item = element('li', { 'data-state': port.present ? 'there' : 'gone' },
    element('i', { 'aria-hidden': true }), element('b', {}, name));
  const toggle = port.present
    ? button('off', event => act(event.target, `com ${port.port} off`), { 'aria-label': `${name} off` })
    : button('on', set, { 'aria-label': `${name} on` });
  toggle.dataset.key = `${name} switch`;
  item.append(element('span', {}, input, ' %', port.present ? '' : element('small', {}, 'not there')), toggle);
  return item;
}

function showPanel(panel) {
  replace(byId('locks'), panel.locks, () => LOCKS.map(lock => lockItem(panel.locks, lock)));
  replace(byId('interfaces'), panel.interfaces, () => panel.interfaces.map(interfaceItem));
  replace(byId('com-ports'), panel.serialPorts, () => panel.serialPorts.map(comItem));
}

export function start() {
  listen('panel', showPanel);
}
