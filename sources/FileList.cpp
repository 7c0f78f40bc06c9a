#include "sources/FileList.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdio>

void FileList::Create(const char* name, const char* startName)
{
    const CascadeString start(startName);
    m_Entries.clear();
    m_nTotalSize = 0;
    FileSearch::Create(name);

    const Members members = Scan();
    if (members.Count() <= 0) {
        std::printf(members.Count() < 0 ? "Out of memory in scandir()\n" : "Create: No matches!\n");
        return;
    }
    const int first = start.IsEmpty() ? 0 : members.Find(start);
    if (first < 0) {
        return;
    }
    m_Entries.reserve(static_cast<size_t>(members.Count() - first));
    for (int i = first; i < members.Count(); ++i) {
        FileListEntry entry {members.Name(i), 0};
        struct stat status { };
        // By the folder's descriptor: the path is not walked again for every member.
        if (fstatat(members.Folder(), members.Name(i), &status, 0) == 0) {
            entry.size = static_cast<unsigned long long>(status.st_size);
        }
        m_nTotalSize += entry.size;
        m_Entries.push_back(std::move(entry));
    }
}

bool FileList::GetFileAt(unsigned long long offset, CascadeString* fileName, unsigned long long* offsetInFile) const
{
    unsigned long long start = 0;
    for (const FileListEntry& entry : m_Entries) {
        if (offset - start < entry.size) {
            *fileName = entry.name;
            *offsetInFile = offset - start;
            return true;
        }
        start += entry.size;
    }
    return false;
}
