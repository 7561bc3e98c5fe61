// builtinservice.h: short ways that only the built-in file service allows.
#ifndef TVXCMN_FILE_BUILTINSERVICE_H
#define TVXCMN_FILE_BUILTINSERVICE_H

// Whether FileService() is the built-in service, so that the system may be asked without it.
bool isFileServiceBuiltIn();

#endif   // TVXCMN_FILE_BUILTINSERVICE_H
