// The command reference beside the line: what the line's first word names, else all names.
import { listen, state } from './bus.js';
import { byId, element } from './dom.js';

let shown = '';

const firstWord = line => /^\s*([^\s(]*)/.exec(line)[1].toLowerCase();
const pairs = (title, list) => list.length === 0 ? [] : [element('h4', {}, title),
  element('dl', {}, ...list.flatMap(([term, text]) => [element('dt', {}, term), element('dd', {}, text)]))];

function described(command) {
  return [element('h3', {}, command.usage), element('p', {}, command.summary),
    ...pairs('Arguments', (command.arguments ?? []).map(one =>
      [one.name, `${one.direction}, ${one.type}${one.optional ? ', optional' : ''}: ${one.meaning}`])),
    ...pairs('Status', (command.statuses ?? []).map(one => [String(one.code), one.meaning])),
    ...(command.example?.length ? [element('h4', {}, 'Example'), element('pre', {}, command.example.join('\n'))] : []),
    ...(command.notes ?? []).map(note => element('p', { className: 'note' }, note))];
}

function overview(commands) {
  return [element('dl', { className: 'overview' }, ...commands.flatMap(command =>
    [element('dt', {}, command.usage), element('dd', {}, command.summary)]))];
}

export function showReference(line) {
  const help = state('help');
  if (!help) return;
  const all = [...help.commands, ...help.console];
  const word = firstWord(line);
  const exact = all.find(command => command.name.toLowerCase() === word);
  const begun = all.filter(command => command.name.toLowerCase().startsWith(word));
  const what = exact ? exact.name : begun.map(command => command.name).join();
  if (what === shown) return;
  shown = what;
  const one = exact ?? (begun.length === 1 ? begun[0] : null);
  byId('reference').replaceChildren(...(one ? described(one) : overview(begun.length ? begun : all)));
  byId('reference').scrollTop = 0;
}

export function start() {
  listen('help', () => showReference(byId('command').value));
}
