// Pictures from PNG and JPEG files.
//
// Units:     the dims are those of the file; the surface may hold fewer pixels (a large photograph is decoded at
//            a half, a quarter or an eighth), its device scale says how many to one of the file's.
// Errors:    an empty picture: not there, neither PNG nor JPEG, damaged beyond its first rows, or larger than 65,500
//            pixels in a direction. Nothing is printed.
// Threads:   any; blocks on the disk.
// Ownership: the caller owns the surface.
#pragma once

#include "host/screen/Canvas.h"

namespace screen {

struct Picture {
    SurfacePtr surface;
    CascadeDims dims;
};

Picture LoadPicture(const char* path);
Picture LoadJpeg(const char* path);
Picture LoadPng(const char* path);

}    // namespace screen
