// What the plots show as a file: a line for each reading, as "watch --csv" writes it, and what was
// done before it in a last column.
import { element } from './dom.js';
import { actsBefore, times, values } from './readings.js';

const quoted = text => `"${text.replaceAll('"', '""')}"`;

function title(channel) {
  return quoted(channel.unit ? `${channel.name} [${channel.unit}]` : channel.name);
}

function line(channels, i) {
  const acts = actsBefore(i);
  return [new Date(times[i]).toISOString(), ...channels.map(channel => values[i].get(channel.number) ?? ''),
    acts.length ? quoted(acts.map(act => act.text).join('; ')) : ''].join(',');
}

export function csvText(channels, first, last) {
  const lines = [['time', ...channels.map(title), 'done'].join(',')];
  for (let i = first; i < last; ++i) lines.push(line(channels, i));
  return lines.join('\n') + '\n';
}

export function saveCsv(channels, first, last) {
  const file = URL.createObjectURL(new Blob([csvText(channels, first, last)], { type: 'text/csv' }));
  const name = `hxdpanel-${new Date().toISOString().slice(0, 19).replaceAll(':', '')}.csv`;
  element('a', { href: file, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(file), 10000);
}
