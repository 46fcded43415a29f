// What happens when memory runs out in the C++ library or in a container of ours.
#pragma once

// From now on a failing operator new says so on the error stream and ends the process with status
// 255. To be called first thing in main; any thread may run into it.
void install_memory_handler();
