/* Start-up, settings, files and lines, string chains, temporary names and message locks. */
#ifndef VEL_FRAME_H
#define VEL_FRAME_H

#include <pthread.h>

#include "vel/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Start-up -------------------------------------------------------------------------------- */

/* Set at start-up, read everywhere; no lock guards them. */
extern VEL_API char iniFileName[16];           /* "ostra.ini" */
extern VEL_API char appName[32];               /* the caller's module name, at most 31 characters */
extern VEL_API char VELQueueDir[4095];         /* [Gateway] QueueDirectory */
extern VEL_API char VELTempDir[4095];          /* [Gateway] TemporaryDirectory */
extern VEL_API char VELInstallDir[4095];       /* [Config] InstallDirectory */
extern VEL_API char VELLogFileName[32];        /* "ostra.log", set by InitVELDll_NOMQ only */
extern VEL_API int32_t bCalledInitVELDll;      /* 1 after a successful InitVELDll */
extern VEL_API int32_t bCalledInitVELDll_NOMQ; /* cleared by TerminateVELDll, never set */
extern VEL_API int32_t INI_MODE; /* 0: INI file (default), 1: configuration interface; else reads give 0 */

/* Starts the library with the message queue.
     name  the calling module's name, for the log; null counts as empty
   Reads the start-up settings, sets the environment variables TZ ([Gateway] TimeZone, default
   "PST8PDT"; a value beginning with "xxx" leaves it alone) and TMP ([Gateway] TemporaryDirectory),
   starts the line I/O and the parsers' locks, and connects to the queue ([Ldap] HostName).
   Returns 1, also at once when already started; 0 when the queue cannot be reached, with
   "MQInit failed." at level 1: a later call tries all of it again. One thread. */
VEL_API int InitVELDll(const char* name);

/* Starts the library without the message queue: as InitVELDll, but nothing is connected, and every
   call reads the settings anew. Returns 1. One thread. */
VEL_API int InitVELDll_NOMQ(const char* name);

/* Closes every file still open through a descriptor call, without flushing, and removes the
   parsers' locks. The queue stays connected. The library may be started again. One thread. */
VEL_API void TerminateVELDll(void);

/* The directories of start-up, never null, empty when not set. The texts are the library's own. */
VEL_API const char* GetQueueDir(void);
VEL_API const char* GetTempDir(void);
VEL_API const char* GetInstallDir(void);

/* ---- Settings -------------------------------------------------------------------------------- */

/* Reads a setting as text, in the manner of GetPrivateProfileString (vel/platform/config.h).
   Returns the number of characters stored; 0, with the buffer untouched, in an unknown INI_MODE. */
VEL_API int VELGetPrivateProfileString(const char* section, const char* key, const char* fallback, char* buffer,
                                       int size, const char* file);

/* Reads a setting as a decimal number: leading digits count, a text without any gives 0, a missing
   key the fallback. Returns 0 in an unknown INI_MODE. */
VEL_API int VELGetPrivateProfileInt(const char* section, const char* key, int fallback, const char* file);

/* Stores a setting. Returns what WritePrivateProfileString returns; 0 in an unknown INI_MODE. */
VEL_API int VELWritePrivateProfileString(const char* section, const char* key, const char* value, const char* file);

/* The same three on the INI file, whatever INI_MODE says. */
VEL_API int VELGetPrivateProfileStringOld(const char* section, const char* key, const char* fallback, char* buffer,
                                          int size, const char* file);
VEL_API int VELGetPrivateProfileIntOld(const char* section, const char* key, int fallback, const char* file);
VEL_API int VELWritePrivateProfileStringOld(const char* section, const char* key, const char* value, const char* file);

VEL_API void UseINI(void);       /* sets INI_MODE to 0 */
VEL_API void UseConfigAPI(void); /* sets INI_MODE to 1, which is served like 0 */

/* ---- Files and lines ------------------------------------------------------------------------- */

/* One open file. The descriptor calls keep it in a pool; the capitalised calls hand it to the
   caller. Reads go through buf; writes do when buffered is set. */
typedef struct vel_file {
    int32_t fd;       /* -1: none */
    char* name;       /* owned: the path given at open */
    char* line;       /* owned: 1025 bytes, every line handed out stands here */
    int32_t pos;      /* bytes consumed or produced since open or the last positioning */
    int32_t flushpos; /* writing: the file offset after a buffer flush by the line writer; reading: internal */
    int32_t mode;     /* 1: open for writing, 0: for reading */
    uint8_t* buf;     /* owned: 4096 bytes */
    uint8_t* cur;     /* cursor into buf; null: nothing is in it */
    int32_t cnt;      /* reading: valid bytes in buf; buffered writing: free bytes in buf */
    int32_t buffered; /* non-zero: writes collect in buf */
} VEL_FILE;

/* Creates the descriptor pool and its locks. Returns 0, also when they exist; -1 without memory.
   Start-up calls it. */
VEL_API int InitLineIO(void);

/* Closes every pooled file without flushing and removes the pool and its locks. */
VEL_API void TerminateLineIO(void);

/* Opens a file and pools it.
     access    bit value 2: write-only, else read-only; nothing is created or truncated
     buffered  non-zero: writes go out in blocks of 4096 bytes
   Returns the descriptor, or -1: silently for a null or empty path and without memory, else with
   "CreateFile failed: %s, error %ld". With [Debug] LogFileIO = TRUE every open and close is logged. */
VEL_API int fileopen(const char* path, int access, int buffered);

/* Opens a file for writing, creating it (0600) when it is missing. An existing file is not
   truncated: its tail stays behind what is written.
     access  has no effect
   Returns the descriptor, or -1: silently for a null or empty path, else with "open failed", "Unable to allocate VEL_FILE object" or "Unable
   to insert VEL_FILE object to memory pool". */
VEL_API int filecreate(const char* path, int access, int buffered);

/* Writes what is buffered and closes. Returns 1, or 0 for an unknown handle. A write that falls
   short logs "fileclose: WriteFile failed." and prints errno on standard output. */
VEL_API int fileclose(int handle);

/* Reads a line: up to and including LF, at most 1024 bytes; a longer line comes in pieces. A last
   line without LF is returned too, unless it ends exactly at the end of a 4096-byte block counted
   from the last positioning; then it is dropped (a kept oddity).
     line  receives the file's own buffer, valid until the next call on the file
   Returns 1, 0 at the end of the file, -1 for a null line, an unknown handle or a failed read
   ("ReadFile failed.", "getline: ReadFile failed."). C callers use the name VELGetLine; in C++ it
   is also the overload getline. */
VEL_API int VELGetLine(int handle, char** line);

/* Writes a text byte for byte. Returns 1, or -1 ("putline: WriteFile failed." when a block of a
   buffered file cannot be written). */
VEL_API int putline(int handle, const char* text);

VEL_API int inch(int handle);                      /* the next byte, 0-255; -1 at the end or on error */
VEL_API int uninch(int character, int handle);     /* steps back one byte; the character is not written back; 1 or -1 */
VEL_API int outch(int character, int handle);      /* writes one byte; 1 or -1 */
VEL_API int setfpos(int handle, int32_t position); /* moves to an absolute offset, drops what is buffered; it or -1 */
VEL_API int getfpos(int handle);                   /* the logical position (VEL_FILE.pos), or -1 */

/* The same on the record itself, outside the pool and never buffered for writing. A null file gives
   -1. FileOpen and FileCreate return null on failure ("CreateFile failed.", "Unable to allocate new
   file objcet." for FileOpen; FileCreate logs nothing). FileClose returns 1; its file must not be
   null. */
VEL_API VEL_FILE* FileOpen(const char* path, int access);
VEL_API VEL_FILE* FileCreate(const char* path);
VEL_API int FileClose(VEL_FILE* file);
VEL_API int GetLine(VEL_FILE* file, char** line);
VEL_API int PutLine(VEL_FILE* file, const char* text);
VEL_API int InCh(VEL_FILE* file);
VEL_API int UninCh(VEL_FILE* file, int character);
VEL_API int OutCh(VEL_FILE* file, int character);
VEL_API int GetFilePos(VEL_FILE* file);
VEL_API int SetFilePos(VEL_FILE* file, int32_t position);

/* ---- Windows-shaped calls -------------------------------------------------------------------- */

/* Opens (bit 0 of how set: reading) or creates (otherwise: writing) a pooled, unbuffered file.
   Returns its descriptor, or -1. */
VEL_API int CreateFile(const char* path, int how);

/* One read or write. Returns 1 with the number of bytes moved in *got or *put; 0 on failure, with 0
   in it (but a ReadFile on handle -1 leaves *got alone). overlapped has no effect. */
VEL_API int ReadFile(int handle, void* buffer, uint32_t length, uint32_t* got, void* overlapped);
VEL_API int WriteFile(int handle, const void* buffer, uint32_t length, uint32_t* put, void* overlapped);

VEL_API int CloseHandle(int handle);                      /* fileclose(handle) != 0 */
VEL_API uint32_t GetFileSize(int handle, uint32_t* high); /* low 32 bits of the size; all ones on failure */
VEL_API int SetEndOfFile(int handle);                     /* truncates to the current size; 1, or 0 */
VEL_API int GetLastError(void);                           /* errno */

/* Moves the descriptor's offset (whence 0 start, 1 current, 2 end). Returns the new offset, -1 on
   failure, 0 for handle -1. high has no effect. */
VEL_API int32_t SetFilePointer(int handle, int32_t offset, int32_t* high, int whence);

/* A critical section is a recursive mutex. */
typedef pthread_mutex_t CRITICAL_SECTION;
VEL_API void InitializeCriticalSection(CRITICAL_SECTION* section);
VEL_API void EnterCriticalSection(CRITICAL_SECTION* section);
VEL_API void LeaveCriticalSection(CRITICAL_SECTION* section);
VEL_API void DeleteCriticalSection(CRITICAL_SECTION* section);

/* ---- String chain ---------------------------------------------------------------------------- */

/* Appends a copy of a text to a chain.
     head  the chain's first node, null for the empty chain; receives the new one then
   Returns 1; 0 without memory (a node that is linked already stays, without a text). The cost grows
   with the chain. */
VEL_API int appendString(ms** head, const char* text);

/* Frees every node and its text; nothing for null. */
VEL_API void freeStringChain(ms* head);

/* ---- Temporary names, message locks, copying ------------------------------------------------- */

/* Makes a name that no file has: [Gateway] TemporaryDirectory (default "/tmp"), the prefix, and a
   number of at least five digits from the counter file "tmpcnt.$$$" there, shared by all processes.
     directory  has no effect
     prefix     null counts as empty
   Returns the path, or null when the counter file cannot be used or 20 names in a row are taken.
   The file is not created. Logs nothing. Any thread, any process. */
VEL_API char* _veltempnam(const char* directory, const char* prefix);
VEL_API char* VELGetTempFileName(const char* directory, const char* prefix); /* the same */

/* Creates, or removes, the lock file "<path>.lck". A second lock of a path succeeds too. Returns 0,
   or -1. With [Debug] LogLocking = YES both log at level 6. */
VEL_API int lockmsg(const char* path);
VEL_API int unlockmsg(const char* path);

/* Answers 0, always: the lock file is not consulted. */
VEL_API int islocked(const char* path);

/* Copies a file over another, after setting the process's umask to 007. Returns 0, always; a write
   that fails is not noticed.
     flag  has no effect */
VEL_API int CopyFile(const char* source, const char* target, int flag);

#ifdef __cplusplus
}

/* VELGetLine under its own name: an overload of the C library's getline. */
VEL_API int getline(int handle, char** line);
#endif

#endif
