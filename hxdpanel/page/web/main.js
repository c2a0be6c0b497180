// Starts the sections; the stream of events comes last, when all of them listen.
import { start as startActivity } from './activity.js';
import { start as startChannels } from './channels.js';
import { start as startCommandLine } from './command-line.js';
import { start as startFaults } from './faults.js';
import { start as startHardware } from './hardware.js';
import { start as startHeader } from './header.js';
import { start as startLive } from './live.js';
import { start as startLog } from './log.js';
import { start as startPlots } from './plots.js';
import { start as startPorts } from './ports.js';
import { start as startReadings } from './readings.js';
import { start as startScreen } from './screen.js';
import { start as startSound } from './sound.js';
import { start as startTimeSync } from './time-sync.js';
import { start as startVariables } from './variables.js';

for (const start of [startHeader, startScreen, startPorts, startHardware, startReadings, startChannels,
  startPlots, startCommandLine, startVariables, startActivity, startLog, startTimeSync, startFaults,
  startSound, startLive]) start();
