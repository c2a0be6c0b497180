// What was read since the page was opened: each channel's newest reading, and the numbers over time
// for the plots. When there are too many of these, every second one of the older half goes.
import { announce, listen } from './bus.js';

const LIMIT = 30000;
const QUIET_MS = 1000;  // without a change, a reading is repeated so often

export const present = new Map();  // number: channel
export const times = [];  // of the server, in ms
export const values = [];  // for each time a Map of number to value, null where it stands for none
export const marks = [];  // { time, text, good }: writes and commands
let now = new Map();
let clockOffset = 0;

export const serverNow = () => Date.now() + clockOffset;

function thin() {
  const half = times.length / 2;
  const stays = (_, i) => i > half || i % 2 === 0;
  for (const list of [times, values]) list.splice(0, list.length, ...list.filter(stays));
}

function sample(time) {
  times.push(Math.max(time, times.at(-1) ?? 0));
  values.push(now);
  if (times.length > LIMIT) thin();
  announce('sampled');
}

function read({ time, channels }) {
  clockOffset = Date.parse(time) - Date.now();
  now = new Map(now);
  for (const channel of channels) {
    present.set(channel.number, channel);
    if (channel.type === 'number') now.set(channel.number, channel.meaning === null ? channel.value : null);
  }
  sample(Date.parse(time));
  announce('readings', channels);
}

function repeat() {
  const isLive = document.getElementById('connection').dataset.state === 'live';
  if (isLive && times.length > 0 && serverNow() - times.at(-1) > QUIET_MS) sample(serverNow());
}

function noteAct({ time, by, line, status }) {
  marks.push({ time: Date.parse(time), text: `${line}  by the ${by}, status ${status.code}`, good: status.code === 0 });
  if (marks.length > 1000) marks.shift();
}

// The last reading that is not after the time; -1 when there is none.
export const readingAt = time => times.findLastIndex(one => one <= time);

// What was done since the reading before.
export const actsBefore = i => marks.filter(({ time }) => time <= times[i] && time > (times[i - 1] ?? 0));

// The readings from one time to another, with those on both sides.
export function between(from, to) {
  const after = times.findLastIndex(time => time < from);
  const before = times.findIndex(time => time > to);
  return [Math.max(after, 0), before < 0 ? times.length : before + 1];
}

export function start() {
  listen('channels', read);
  listen('acted', noteAct);
  setInterval(repeat, QUIET_MS);
}
