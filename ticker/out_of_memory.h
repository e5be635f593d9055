#pragma once

// The process's allocation-failure handler while the library is loaded: it asks whether to try
// again, and ends the process when the user gives up. Its texts are strings 1 and 10001 of the host
// program.
void InstallOutOfMemoryHandler();
void RestoreOutOfMemoryHandler();
