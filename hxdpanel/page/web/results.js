// Results of the console's lines, as elements. A table names what each kind of object shows.
import { element, statusText } from './dom.js';

const channelText = ({ number, name, value, unit, meaning }) =>
  `${number} ${name} = ${value ?? '–'}${unit ? ` ${unit}` : ''}${meaning ? ` (${meaning})` : ''}`;
const variableText = ({ name, type, value }) => `${name} = ${value} (${type})`;
const lines = (className, texts) => texts.map(text => element('p', { className }, text));

const KINDS = {
  command: result => [...lines('', result.variables.map(variableText)),
    ...lines('saved', result.saved.map(file => `saved ${file}`)), ...lines('note', result.notes)],
  write: result => [...lines('', [channelText(result.channel)]), ...lines('note', result.notes)],
  channels: result => lines('', result.channels.map(channelText)),
  read: result => lines('', [channelText(result.channel)]),
  vars: result => lines('', result.variables.map(variableText)),
  hardware: result => lines('', [result.message]),
  ntp: result => lines('', result.settings.map(channelText)),
  help: result => [...lines('', result.commands.map(one => `${one.usage}  ${one.summary}`)),
    ...lines('', result.console.map(one => `${one.usage}  ${one.summary}`)),
    ...lines('', result.channels.map(one => `${one.number} ${one.name}: ${one.accepts}`))],
};

function bodyOf(result) {
  return KINDS[result.kind]?.(result) ?? [element('pre', {}, JSON.stringify(result, null, 1))];
}

export function resultItem(line, answered) {
  const good = answered.status.code === 0;
  return element('li', { 'data-good': good },
    element('p', { className: 'line' }, element('code', {}, line), element('b', {}, statusText(answered.status))),
    ...answered.results.flatMap(bodyOf), ...lines('driver', answered.log ?? []));
}

export function refusedItem(line, refusal) {
  return element('li', { 'data-good': false }, element('p', { className: 'line' }, element('code', {}, line)),
    element('p', { className: 'note' }, refusal.message));
}
