/* The entry point of the notifier example when a linker of Microsoft's kind links it, without the
   start-up code of a C run-time. Tells as well whether PrintError came from the library. */

#include <stdio.h>
#include <stdlib.h>
#include <windows.h>

#include <postrider/postrider_ticker.h>

int main(int argc, char **argv);

/* The compiler has main call it. */
void __main(void)
{
}

void start(void)
{
    static char *arguments[] = {"notifier", FOLDER "\\DFile", NULL};
    FARPROC printError = GetProcAddress(GetModuleHandleA("JXTICDLL.DLL"), "PrintError");

    int status = main(2, arguments);
    puts(printError == (FARPROC)PrintError ? "PrintError is there" : "PrintError is missing");
    exit(status);
}
