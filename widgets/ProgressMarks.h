// The arithmetic of the progress bar: where a recording's chapters and bookmarks are, in percent of the
// whole, and how far playback has come.
//
// Units:     bytes in, percent (0 to 100) out. Percentages are taken from KiB, as 32-bit numbers.
// Errors:    a recording of less than one KiB has no marks and no progress.
// Threads:   values.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/CascadeString.h"

class ProgressMarks {
public:
    struct File {
        CascadeString name;    // without folder
        uint64_t size = 0;
    };
    struct Mark {
        CascadeString name;    // of the file it is in
        long long position = 0;
    };

    // A recording of one file or several: a mark counts when its file is one of them. Without any chapter
    // the ends of the files stand in for chapters.
    static ProgressMarks OfFiles(std::vector<File> files, const std::vector<Mark>& chapters, const std::vector<Mark>& bookmarks)
    {
        ProgressMarks marks;
        uint64_t before = 0;
        for (const File& file : files) {
            before += file.size;
        }
        marks.m_nTotal = before;
        before = 0;
        for (const File& file : files) {
            marks.AppendThoseIn(file, before, chapters, marks.m_Chapters);
            marks.AppendThoseIn(file, before, bookmarks, marks.m_Bookmarks);
            before += file.size;
            if (chapters.empty()) {
                marks.Append(before, marks.m_Chapters);
            }
        }
        marks.m_Files = std::move(files);
        return marks;
    }

    // One stream: every mark counts, whatever file it names.
    static ProgressMarks OfStream(uint64_t size, const std::vector<Mark>& chapters, const std::vector<Mark>& bookmarks)
    {
        ProgressMarks marks;
        marks.m_nTotal = size;
        for (const Mark& mark : chapters) {
            marks.Append(static_cast<uint64_t>(mark.position), marks.m_Chapters);
        }
        for (const Mark& mark : bookmarks) {
            marks.Append(static_cast<uint64_t>(mark.position), marks.m_Bookmarks);
        }
        return marks;
    }

    const std::vector<double>& Chapters() const { return m_Chapters; }
    const std::vector<double>& Bookmarks() const { return m_Bookmarks; }
    uint64_t TotalBytes() const { return m_nTotal; }

    // How far a position in the named file is into the whole, in bytes; at most the whole. A name that is
    // none of the files counts from the start.
    uint64_t PositionInWhole(const char* name, uint64_t position) const
    {
        uint64_t before = 0;
        uint64_t start = 0;
        for (const File& file : m_Files) {
            if (file.name == name) {
                start = before;
            }
            before += file.size;
        }
        return start + std::min(position, m_nTotal - start);
    }

private:
    static uint32_t KiB(uint64_t bytes) { return static_cast<uint32_t>(bytes >> 10); }

    void Append(uint64_t position, std::vector<double>& marks) const
    {
        if (KiB(m_nTotal) != 0) {
            marks.push_back(static_cast<double>(KiB(position)) / KiB(m_nTotal) * 100.0);
        }
    }

    void AppendThoseIn(const File& file, uint64_t before, const std::vector<Mark>& from, std::vector<double>& marks) const
    {
        for (const Mark& mark : from) {
            if (mark.name.Compare(file.name, false) == 0) {
                Append(before + static_cast<uint64_t>(mark.position), marks);
            }
        }
    }

    std::vector<File> m_Files;
    uint64_t m_nTotal = 0;
    std::vector<double> m_Chapters;
    std::vector<double> m_Bookmarks;
};
