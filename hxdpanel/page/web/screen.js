// The panel's face: its screen with light, brightness and beeps.
import { calmed, listen, state } from './bus.js';
import { byId, setText } from './dom.js';
import { act } from './hardware.js';

const BEEP_SHOWN_MS = 1500;
let pictures = 0;
let beepTimer = 0;

// The new picture is loaded before it takes the place of the old one: nothing flickers. While nobody
// can see it, none is fetched.
function fetchScreen() {
  if (document.hidden) return;
  const picture = new Image();
  const number = ++pictures;
  picture.onload = () => {
    if (number === pictures) byId('screen').src = picture.src;
  };
  picture.src = `/api/screen.png?n=${number}`;
}

function showPanel(panel) {
  const slider = byId('brightness');
  byId('light').setAttribute('aria-checked', panel.light);
  byId('screen-off').hidden = panel.light;
  slider.disabled = panel.brightness === null;
  if (document.activeElement !== slider) slider.value = panel.brightness ?? 0;
  setText(byId('brightness-shown'), panel.brightness === null ? 'no control' : `${panel.brightness} %`);
}

// In ms, by the face of a clock whose hour may be more than 23: "2026-01-31 28:00:00", or ISO 8601.
function faceMs(text) {
  const [year, month, ...rest] = text.split(/\D/);
  return Date.UTC(year, month - 1, ...rest.slice(0, 5));
}

// The panel's clock goes on from the last reading, the battery's from what the driver set it to.
function showClocks() {
  let aheadMs = null;  // of the browser's steady clock
  let batteryAheadMs = null;  // of the panel's
  const show = (id, ms) => setText(byId(id), new Date(ms).toISOString().slice(0, 19).replace('T', ' '));
  listen('channels', ({ time }) => { aheadMs = faceMs(time) - performance.now(); });
  listen('time', ({ realTimeClock, realTimeClockSetAt }) => {
    batteryAheadMs = realTimeClock && faceMs(realTimeClock) - faceMs(realTimeClockSetAt);
    if (!realTimeClock) setText(byId('battery-clock'), 'not set in this run');
  });
  setInterval(() => {
    if (aheadMs === null || state('connection')?.state !== 'live') return;
    const now = aheadMs + performance.now();
    show('system-clock', now);
    if (batteryAheadMs !== null) show('battery-clock', now + batteryAheadMs);
  }, 250);
}

function showBeep(event) {
  if (event.kind !== 'beep') return;
  setText(byId('beep'), `♪ ${event.text}`);
  clearTimeout(beepTimer);
  beepTimer = setTimeout(() => setText(byId('beep'), ''), Math.max(BEEP_SHOWN_MS, event.milliseconds ?? 0));
}

export function start() {
  const slider = byId('brightness');
  const turn = calmed(() => act(slider, `brightness ${slider.value}`), 150);
  slider.addEventListener('input', turn);
  byId('light').addEventListener('click', event =>
    act(event.target, event.target.getAttribute('aria-checked') === 'true' ? 'light off' : 'light on'));
  listen('screen', fetchScreen);
  document.addEventListener('visibilitychange', fetchScreen);
  listen('panel', showPanel);
  listen('did', showBeep);
  showClocks();
}
