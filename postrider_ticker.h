/* The plain functions of JXTICDLL.DLL, for any C or C++ compiler that makes 32-bit Windows programs:
   how a notifier lists an inbox.

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
   it cannot be opened, or has no used record. A walk must be ended, by a 0 or by Done, before the
   next one begins. Null pointers give 0. */
POSTRIDER_TICKER_API int __stdcall GetFirstRecord(const char* path, char** topic, char** fileName,
                                                  char** sender, unsigned short* kind,
                                                  unsigned short* flag);

/* Returns 1 with the next used record: its topic, the name of the message's file, the sender's name
   ("given family"), its kind word (0 to 6) and its flag, 1 when the message is processed, else 0.
   Returns 0, writes nothing and closes the file at its end. */
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
