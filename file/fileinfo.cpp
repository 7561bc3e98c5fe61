#include "fileinfo.h"

FileInfoC::~FileInfoC() = default;
