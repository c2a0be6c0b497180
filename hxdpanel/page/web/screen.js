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

// The panel's clock is that of the last reading, and goes on from there; of the battery's one knows
// what the driver set it to.
function showClocks() {
  let aheadMs = null;  // of the browser's steady clock
  listen('channels', ({ time }) => { aheadMs = Date.parse(`${time.slice(0, 19)}Z`) - performance.now(); });
  setInterval(() => {
    if (aheadMs === null || state('connection')?.state !== 'live') return;
    const now = new Date(aheadMs + performance.now());
    setText(byId('system-clock'), now.toISOString().slice(0, 19).replace('T', ' '));
  }, 250);
  listen('time', ({ realTimeClock }) => setText(byId('battery-clock'), realTimeClock ?? 'not set in this run'));
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
