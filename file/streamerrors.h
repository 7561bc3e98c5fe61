// streamerrors.h: reports that more than one class of streams and writers makes.
#ifndef TVXCMN_FILE_STREAMERRORS_H
#define TVXCMN_FILE_STREAMERRORS_H

#include "errorapi.h"

inline ErrorT reportNoWriting()
{
    return Error(TVXERR_STREAM_CANNOT_WRITE, "Attempted to write to a stream that does not support writing");
}

#endif   // TVXCMN_FILE_STREAMERRORS_H
