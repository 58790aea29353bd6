#pragma once

// SIGTERM and SIGINT (a session ending, a package check, Ctrl+C in a terminal) close
// the windows as the user's close would: an idle program ends with status 0, a run in
// progress refuses as it does for the user. Call once, after the QApplication exists.
void CloseWindowsOnTerminate();
