/* Tells of the messages in the current user's inbox, or in the D file named, that nobody has
   processed yet. */

#include <stdio.h>
#include <windows.h>

#include <postrider/postrider_ticker.h>

int main(int argc, char** argv) {
    char *inbox, *userData, *topic, *fileName, *sender;
    unsigned short kind, processed;
    int more, waiting = 0;

    /* The library's texts are ANSI. */
    SetConsoleOutputCP(GetACP());

    if (argc > 1) {
        inbox = argv[1];
    } else if (!GetCurUserPath(&inbox, &userData)) {
        fprintf(stderr, "There is no current user.\n");
        return 1;
    }

    more = GetFirstRecord(inbox, &topic, &fileName, &sender, &kind, &processed);
    for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &processed)) {
        if (processed)
            continue;
        printf("%s: %s (%s)\n", sender, topic, fileName);
        ++waiting;
    }
    Done();

    printf("%d waiting\n", waiting);
    return 0;
}
