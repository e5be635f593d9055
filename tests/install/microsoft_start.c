/* The entry point of the notifier example when a linker of Microsoft's kind links it, without the
   start-up code of a C run-time. Tells as well whether every function is the library's own. */

#include <stdio.h>
#include <stdlib.h>
#include <windows.h>

#include <postrider/postrider_ticker.h>

int main(int argc, char** argv);

/* The compiler has main call it. */
void __main(void) {}

static int Is(const char* name, FARPROC function) {
    return function && function == GetProcAddress(GetModuleHandleA("JXTICDLL.DLL"), name);
}

void start(void) {
    static char* arguments[] = {"notifier", FOLDER "\\DFile", NULL};
    int status = main(2, arguments);
    int all = Is("GetCurUserPath", (FARPROC)GetCurUserPath) &&
              Is("GetFirstRecord", (FARPROC)GetFirstRecord) &&
              Is("GetNextRecord", (FARPROC)GetNextRecord) && Is("Done", (FARPROC)Done) &&
              Is("PrintError", (FARPROC)PrintError);
    puts(all ? "All functions are there" : "Functions are missing");
    exit(status);
}
