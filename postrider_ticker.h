/* The plain functions of JXTICDLL.DLL, for any C or C++ compiler that makes 32-bit Windows
   programs: how a notifier lists an inbox.

       char *inbox, *userData, *topic, *fileName, *sender;
       unsigned short kind, flag;
       int more = GetCurUserPath(&inbox, &userData) &&
                  GetFirstRecord(inbox, &topic, &fileName, &sender, &kind, &flag);
       for (; more; more = GetNextRecord(&topic, &fileName, &sender, &kind, &flag))
           ...
       Done();

   Texts are ANSI and belong to the library: copy what you keep before the next call. The state is
   the process's, without locks: one thread at a time walks one inbox. */

#ifndef POSTRIDER_TICKER_H
#define POSTRIDER_TICKER_H

/* JXTICDLL.DLL's own sources define JXTICDLL_EXPORTS. */
#ifdef JXTICDLL_EXPORTS
#define POSTRIDER_TICKER_API __declspec(dllexport)
#else
#define POSTRIDER_TICKER_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The path of the current user's inbox D file, and that of the file in the Windows directory that
   tells it. Returns non-zero, or 0 with nothing written when there is no current user. Both texts
   last until Done or the next call, but the second is emptied by each of the record functions. */
POSTRIDER_TICKER_API int __stdcall GetCurUserPath(char** inboxPath, char** userDataPath);

/* Opens the D file `path` and returns its first used record, as GetNextRecord does. Returns 0 when
   it cannot be opened, has no used record, or a pointer is null; GetLastError then tells why:
   ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND, ERROR_SHARING_VIOLATION when another program holds
   it, ERROR_NO_MORE_ITEMS when it has no used record, ERROR_READ_FAULT, or what else Windows says
   of the open. Call Done after a 0: a walk whose file could not be opened is in progress until
   then, and beginning another one meanwhile is reported in a modal dialog. The file can be changed,
   renamed and replaced while it is walked: the walk goes on over the file that it opened. */
POSTRIDER_TICKER_API int __stdcall GetFirstRecord(const char* path, char** topic, char** fileName,
                                                  char** sender, unsigned short* kind,
                                                  unsigned short* flag);

/* Returns 1 with the next used record: its topic, the name of the message's file, the sender's name
   ("given family"), its kind word (0 to 6) and its flag, 1 when the message is processed, else 0.
   Returns 0, writes nothing and closes the file at its end, where GetLastError is
   ERROR_NO_MORE_ITEMS, or ERROR_READ_FAULT where it breaks off. */
POSTRIDER_TICKER_API int __stdcall GetNextRecord(char** topic, char** fileName, char** sender,
                                                 unsigned short* kind, unsigned short* flag);

/* Ends the walk and frees the texts. May be called at any time. */
POSTRIDER_TICKER_API void __stdcall Done(void);

/* Shows string resource `textId` of the module `instance`, formatted as by printf with what
   follows, in a message box with string resource `captionId` as caption; keeps 255 characters.
   Returns the box's result. */
POSTRIDER_TICKER_API int __cdecl PrintError(unsigned int textId, unsigned int captionId,
                                            int notUsed, void* instance, ...);

#ifdef __cplusplus
}
#endif

#endif
