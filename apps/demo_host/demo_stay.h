// What the demo does when its journey is over and the server stays.
#pragma once

#include <string>

namespace demo_host {

// Blocks until a key is pressed on the terminal, if standard input is one, or until SIGINT, SIGTERM
// or SIGHUP comes. On the main thread; the process's other threads must block these signals.
void waitForKeyOrSignal();

// Starts the desktop's browser. False when there is none.
bool openInBrowser(const std::string& url);

}  // namespace demo_host
