// Where the page of the server begins; a report begins with report.js.

import {start} from './app.js';

start();
