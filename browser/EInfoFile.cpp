#include "browser/EInfoFile.h"

#include <string_view>

#include "browser/TextBytes.h"
#include "platform/CascadeFile.h"
#include "sources/FileSearch.h"

namespace {

constexpr const char* kFolderFiles[] = {"folder.nfo", "info.txt", "description.txt", "folder.my"};
constexpr const char* kEndings[] = {".nfo", ".txt", ".my"};

struct Key {
    std::string_view name;
    CascadeString EInfoFile::*field;
};
// A name that begins with a key counts as that key, so the order matters.
constexpr Key kKeys[] = {
    {"title", &EInfoFile::title},
    {"summary", &EInfoFile::description},
    {"description", &EInfoFile::description},
    {"tvoverview", &EInfoFile::description},
    {"genre", &EInfoFile::genre},
    {"tvgenre", &EInfoFile::genre},
    {"director", &EInfoFile::director},
    {"tvdirector", &EInfoFile::director},
    {"writer", &EInfoFile::writer},
    {"tvwriter", &EInfoFile::writer},
    {"rating", &EInfoFile::rating},
    {"tvrated", &EInfoFile::rating},
    {"tvparentalratings", &EInfoFile::rating},
    {"year", &EInfoFile::year},
    {"tvyear", &EInfoFile::year},
    {"actors", &EInfoFile::actors},
    {"tvactors", &EInfoFile::actors},
};

// A folder of such a name is none.
bool IsFile(const CascadeString& path)
{
    const CascadeFSObject object(path);
    return object.Exists() && !object.IsDirectory();
}

CascadeString FindInFolder(CascadeString folder)
{
    if (folder.Right(1) != "/") {
        folder += '/';
    }
    for (const char* name : kFolderFiles) {
        if (IsFile(folder + name)) {
            return folder + name;
        }
    }
    return {};
}

CascadeString FindBeside(const CascadeString& base)
{
    for (const char* ending : kEndings) {
        if (IsFile(base + ending)) {
            return base + ending;
        }
    }
    return {};
}

}    // namespace

CascadeString EInfoFile::GetAssociatedInfoFile(const char* path, CascadeString& title)
{
    bool ofParentFolder = false;
    return Find(path, title, ofParentFolder);
}

CascadeString EInfoFile::Find(const char* path, CascadeString& title, bool& ofParentFolder)
{
    const CascadeFile file(path);
    if (file.IsDirectory()) {
        title = file.GetName();
        return FindInFolder(file.GetPath());
    }
    const CascadeString extension = file.GetFilenameExtension();
    const size_t dropped = extension.IsEmpty() ? 0 : extension.GetLength() + 1;
    const CascadeString name = file.GetName();
    title = name.Left(name.GetLength() - dropped);
    CascadeString found = FindBeside(file.GetPath().Left(file.GetPath().GetLength() - dropped));
    if (found.IsEmpty()) {
        FileSearch sequence;
        sequence.Create(path);
        found = FindBeside(sequence.GetPath() + "/" + sequence.GetBase());
    }
    if (found.IsEmpty()) {
        // On purpose: a recording without notes of its own shows those of its folder, under the folder's name.
        const CascadeString parent = file.GetParentPath();
        found = parent.IsEmpty() ? CascadeString() : FindInFolder(parent);
        ofParentFolder = !found.IsEmpty();
        if (ofParentFolder) {
            title = CascadeFSObject(parent).GetName();
        }
    }
    return found;
}

void EInfoFile::Reset()
{
    *this = EInfoFile();
}

void EInfoFile::ParseFile(const char* path)
{
    const CascadeString given(path);
    Reset();
    file = given;
    CascadeString displayTitle;
    const CascadeString infoFile = Find(given, displayTitle, m_bOfParentFolder);
    if (!infoFile.IsEmpty()) {
        ParseText(TextBytes::ReadTextFile(infoFile));
    }
    if (title.IsEmpty()) {
        title = displayTitle;
    }
}

void EInfoFile::ParseText(const CascadeString& text)
{
    bool known = false;
    for (const std::string_view line : TextBytes::Lines(text.Str())) {
        const size_t equals = line.find('=');
        if (equals == std::string_view::npos || equals == 0 || equals + 1 == line.size() || line.find('=', equals + 1) != std::string_view::npos) {
            continue;    // on purpose: there is no quoting, so a second "=" spoils the line
        }
        const CascadeString name(line.substr(0, equals));
        for (const Key& key : kKeys) {
            if (name.Compare(key.name.data(), false, false, key.name.size()) == 0) {
                this->*key.field = CascadeString(line.substr(equals + 1));
                known = true;
                break;
            }
        }
    }
    if (!known) {
        description = text;    // prose
    }
}
