// The table of channels: live, changes marked, writable in place.
import { listen } from './bus.js';
import { complaint, isNumber } from './check.js';
import { answer, byId, element, roving, setText, statusText } from './dom.js';
import { present } from './readings.js';
import { writeChannel } from './server.js';

const section = byId('channels');
const rows = new Map();  // number: { row of the catalogue, tr, value: the cell's element }

function buildRow(row) {
  const value = row.writable
    ? element('button', { type: 'button', className: 'value', onclick: () => edit(row), title: row.accepts,
      'aria-label': `Write ${row.number} ${row.name}` })
    : element('span', { className: 'value' });
  const meaning = element('small');  // of a special value
  const tr = element('tr', { id: `channel-${row.number}` }, element('td', {}, String(row.number)),
    element('th', { scope: 'row' }, row.name), element('td', {}, value, meaning), element('td', {}, row.unit));
  rows.set(row.number, { row, tr, value, meaning });
  return tr;
}

function build(help) {
  section.querySelector('tbody').replaceChildren(...help.channels.map(buildRow));
  roving(section.querySelector('tbody'), 'button.value');
  present.forEach(show);
}

function mark(tr) {
  const colour = getComputedStyle(tr).getPropertyValue('--changed');
  tr.animate([{ backgroundColor: colour }, { backgroundColor: 'transparent' }], 2000);
}

function show(channel) {
  const shown = rows.get(channel.number);
  if (!shown) return;
  const text = channel.value === null ? '–' : String(channel.value);
  const before = shown.value.dataset.text;
  if (before !== undefined && before !== text) mark(shown.tr);
  shown.value.dataset.text = text;
  setText(shown.value, text === '' ? '(empty)' : text);
  shown.value.dataset.special = channel.meaning !== null || text === '';
  if (shown.row.writable) shown.value.setAttribute('aria-label', `Write ${channel.number} ${channel.name}, now ${text}`);
  setText(shown.meaning, channel.meaning ?? '');
}

async function write(row, text) {
  const value = row.type === 'number' && isNumber(text) ? Number(text) : text;
  answer(section, `writing ${row.number} ${row.name} …`, true);
  try {
    const wrote = await writeChannel(row.number, value);
    const now = wrote.status.code === 0 ? ` = ${wrote.channel.value}` : '';
    const notes = wrote.notes.length ? `; ${wrote.notes.join('; ')}` : '';
    show(wrote.channel);
    answer(section, `${row.number} ${row.name}${now}: ${statusText(wrote.status)}${notes}`, wrote.status.code === 0);
  } catch (refusal) {
    answer(section, `${row.number} ${row.name}: ${refusal.message}`, false);
  }
}

// A field in the value's place: Enter writes, Esc leaves. What the catalogue does not accept is
// written at the second Enter only: how the driver refuses it may be what one wants to see.
function edit(row) {
  const { value } = rows.get(row.number);
  const input = element('input', { className: 'value', value: value.dataset.text ?? '', spellcheck: false,
    'aria-label': `New value of ${row.number} ${row.name}` });
  let warned = null;
  const leave = () => {
    input.onblur = null;
    input.replaceWith(value);
    value.focus();
  };
  const check = () => {
    const wrong = complaint(row, input.value);
    input.setAttribute('aria-invalid', wrong !== '');
    answer(section, wrong || row.accepts, wrong === '');
    return wrong;
  };
  input.oninput = check;
  input.onblur = () => document.hasFocus() && input.replaceWith(value);
  input.onkeydown = event => {
    if (event.key === 'Escape') leave();
    if (event.key !== 'Enter') return;
    event.preventDefault();  // else the value, which has the focus next, would be pressed with it
    const text = input.value;
    const wrong = check();
    const canBeSent = row.type !== 'number' || isNumber(text);
    if (wrong && (!canBeSent || warned !== text)) {
      warned = text;
      answer(section, canBeSent ? `${wrong}; Enter again writes it all the same` : wrong, false);
      return;
    }
    leave();
    write(row, text);
  };
  value.replaceWith(input);
  input.focus();
  input.select();
  check();
}

export function start() {
  listen('help', build);
  listen('readings', channels => channels.forEach(show));
}
