// The console's hardware commands behind buttons and fields, and the section of clock, wear and load.
import { listen } from './bus.js';
import { answer, button, byId, element, setText, statusText } from './dom.js';
import { run } from './server.js';

// Runs a line of the console for the section in which the node lies; false when it was refused.
export async function act(node, line) {
  const section = node.closest('section') ?? byId('panel');
  try {
    const ran = await run(line);
    answer(section, ran.results.map(resultText).join('; ') || 'done', ran.status.code === 0);
    return ran.status.code === 0;
  } catch (refusal) {
    answer(section, refusal.message, false);
    return false;
  }
}

function resultText(result) {
  const variables = (result.variables ?? []).map(({ name, value }) => `${name} = ${value}`);
  const status = result.status ? [`${result.command ?? result.channel?.name}: ${statusText(result.status)}`] : [];
  return result.message ?? [...status, ...variables].join(', ');
}

const CLOCK = [
  ['hold', 'clock hold'], ['run', 'clock run'], ['×60', 'clock x60'],
  ['+1 m', 'clock +1m'], ['+1 h', 'clock +1h'], ['+1 d', 'clock +1d'],
];

const SPEEDS = { 'clock hold': 0, 'clock run': 1, 'clock x60': 60 };

// A field, what it is set with, what takes it back, and the kind of flash that it is about.
const AMOUNTS = [
  { label: 'CPU use', line: 'cpu', value: '0.8', undo: 'machine' },
  { label: 'Memory', line: 'memory', value: '64M', undo: 'machine' },
  { label: 'Write to flash', line: 'disk write', value: '300M' },
  { label: 'Life used', line: 'disk wear life_time', value: '0x05 0x02', flash: 'eMMC' },
  { label: 'Pre-EOL', line: 'disk wear pre_eol_info', value: '0x02', flash: 'eMMC' },
  { label: 'Erase count', line: 'disk wear erase_count', value: '+1000', flash: 'NAND' },
  { label: 'Bad blocks', line: 'disk wear bad_blocks', value: '20', flash: 'NAND' },
];

function amountRow({ label, line, value, undo, flash = '' }) {
  const input = element('input', { value, size: 9, spellcheck: false, 'aria-label': label });
  const row = element('form', { className: 'row amount', 'data-flash': flash }, element('span', {}, label), input,
    element('button', { type: 'submit', 'aria-label': `Set: ${label}` }, 'set'));
  if (undo) row.append(button(undo, () => act(row, `${line} ${undo}`), { 'aria-label': `${label}: this machine's` }));
  row.addEventListener('submit', event => {
    event.preventDefault();
    act(row, `${line} ${input.value}`);
  });
  return row;
}

function clockText({ held, speed, aheadMs }) {
  const ahead = aheadMs >= 1000 ? `, ${(aheadMs / 3600000).toFixed(2)} h ahead` : '';
  return held ? `The clock is held${ahead}; what the driver waits for moves it.`
    : `The clock runs${speed === 1 ? '' : ` ${speed} times as fast`}${ahead}.`;
}

const amountText = ({ source, use, bytes }) =>
  source === 'hand' ? String(use ?? `${Math.round(bytes / 1048576)} MiB`) : `the ${source}'s`;

// What the flash tells, in the words of the console.
function flashText(flash) {
  if (flash === null) return 'no flash';
  return flash.kind === 'eMMC'
    ? `eMMC: life ${flash.lifeTime ?? 'not told'}, pre-EOL ${flash.preEolInfo ?? 'not told'}`
    : `NAND: ${flash.erasures} erasures of ${flash.blocks} blocks, ${flash.badBlocks} bad`;
}

function showPanel(panel) {
  const { speed } = panel.clock;
  setText(byId('clock-state'), clockText(panel.clock));
  setText(byId('storage'), `CPU use: ${amountText(panel.cpu)}; memory: ${amountText(panel.memory)}; ${flashText(panel.flash)}`);
  for (const row of byId('amounts').children)
    row.hidden = row.dataset.flash !== '' && row.dataset.flash !== panel.flash?.kind;
  for (const [line, its] of Object.entries(SPEEDS))
    byId('clock').querySelector(`[data-line="${line}"]`).setAttribute('aria-pressed', its === speed);
}

export function start() {
  for (const [text, line] of CLOCK)
    byId('clock').append(button(text, event => act(event.target, line), { 'data-line': line, title: line }));
  byId('amounts').append(...AMOUNTS.map(amountRow));
  listen('panel', showPanel);
}
