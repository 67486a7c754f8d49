// Where a report begins: the page with a capture in it, and no server.

import {start} from './app.js';
import {store} from './store.js';

const report = JSON.parse(document.getElementById('capture').textContent);
store.isReport = true;
store.masked = report.masked;
store.openCapture(report);
start();
