#include "app/TextFile.h"

#include "platform/CascadeFile.h"
#include "platform/CascadeStream.h"

bool TextFile::Read(const char* path, size_t largest, std::string& text)
{
    CascadeFileStream stream;
    if (!stream.Open(CascadeFile(path)) || stream.GetSize() > largest) {
        return false;
    }
    text.resize(static_cast<size_t>(stream.GetSize()));
    text.resize(stream.ReadBytes(static_cast<unsigned long>(text.size()), text.data()));
    return true;
}
