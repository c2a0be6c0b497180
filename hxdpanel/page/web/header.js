// The line on top: which panel, whether it is there.
import { listen } from './bus.js';
import { byId, setText } from './dom.js';
import { act } from './hardware.js';

export function start() {
  const connection = byId('connection');
  listen('connection', ({ state, text }) => {
    connection.dataset.state = state;
    setText(connection.querySelector('b'), text);
  });
  listen('hello', ({ version, serialNumber }) => {
    setText(byId('serial'), serialNumber);
    byId('serial').title = `hxdpanel ${version}`;
    document.title = `${serialNumber} – hxdpanel`;
  });
  byId('restart').addEventListener('click', event => act(event.target, 'restart'));
}
