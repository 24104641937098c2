// What the relaunch uses of macOS's own header, for the type check.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

char*** _NSGetArgv(void);
int* _NSGetArgc(void);

#ifdef __cplusplus
}
#endif
