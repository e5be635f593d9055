/* first_record LIBRARY DFILE: prints how many nanoseconds passed from before the library was loaded
   until the first record of the D file was there: by GetFirstRecord, or by a plain read where the
   library has no such function. */

#include <stdio.h>
#include <windows.h>

typedef int(__stdcall* FirstRecord)(const char*, char**, char**, char**, unsigned short*,
                                    unsigned short*);

static int ReadFirstRecord(const char* path) {
    char record[2 * 316];
    DWORD read = 0;
    HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, NULL,
                              OPEN_EXISTING, 0, NULL);
    ReadFile(file, record, sizeof record, &read, NULL);
    CloseHandle(file);
    return read == sizeof record;
}

int main(int argc, char** argv) {
    LARGE_INTEGER frequency, start, end;
    char *topic, *fileName, *sender;
    unsigned short kind, flag;
    int found;
    if (argc != 3)
        return 2;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);
    {
        const HMODULE library = LoadLibraryA(argv[1]);
        const FirstRecord get =
            (FirstRecord)(void*)(library ? GetProcAddress(library, "GetFirstRecord") : NULL);
        found = library && (get ? get(argv[2], &topic, &fileName, &sender, &kind, &flag)
                                : ReadFirstRecord(argv[2]));
    }
    QueryPerformanceCounter(&end);
    if (!found)
        return 1;
    printf("%.0f\n", (double)(end.QuadPart - start.QuadPart) * 1e9 / (double)frequency.QuadPart);
    return 0;
}
