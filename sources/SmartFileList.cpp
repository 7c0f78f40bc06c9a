#include "sources/SmartFileList.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/CascadeFile.h"

namespace {

// Tells why a scan answers no member at all; false when it does not.
bool ReportEmpty(int count, const char* operation)
{
    if (count < 0) {
        std::printf("Out of memory in scandir()\n");
    } else if (count == 0) {
        std::printf("%s: No matches!\n", operation);
    }
    return count <= 0;
}

}    // namespace

void SmartFileList::Create(const char* name)
{
    CascadeString given(name);    // may be this cursor's own text
    FileSearch::Create(given);
    m_CurrentName = CascadeFile(given).GetName();
    m_Current = std::move(given);
}

const char* SmartFileList::StepTo(const Members& members, int index)
{
    m_CurrentName = members.Name(index);
    m_Current = GetPath() + "/" + m_CurrentName;
    std::printf("found: %s\n", m_Current.Text());
    return m_Current;
}

const char* SmartFileList::GetNextFile()
{
    const Members members = Scan();
    if (ReportEmpty(members.Count(), "GetNextFile")) {
        return nullptr;
    }
    // On purpose: a cursor whose file has vanished goes on with the second member.
    const int index = std::max(members.Find(m_CurrentName), 0);
    return index + 1 < members.Count() ? StepTo(members, index + 1) : nullptr;
}

const char* SmartFileList::GetPrevFile()
{
    const Members members = Scan();
    if (ReportEmpty(members.Count(), "GetPrevFile")) {
        return nullptr;
    }
    const int index = members.Find(m_CurrentName);
    return index > 0 ? StepTo(members, index - 1) : nullptr;
}

unsigned long long SmartFileList::GetCurrentFileSize() const
{
    struct stat status { };
    if (!CascadeFSObject::IsAwake(m_Current) || stat(m_Current, &status) != 0) {
        std::printf("stat of %s failed!\n", m_Current.Text());
        return 0;
    }
    return static_cast<unsigned long long>(status.st_size);
}

// Walks a second cursor from the first member to the last. It starts from the name as it was given, steps
// back to the first member and forward again, all on one scan: a scan a step would cost the square of
// the number of files, and this is asked for while playing.
unsigned long long SmartFileList::GetTotalFileSize(long long& throughCurrent) const
{
    SmartFileList walk;
    walk.Create(GetName());
    const Members members = walk.Scan();
    int index = members.Find(walk.m_CurrentName);
    if (!ReportEmpty(members.Count(), "GetPrevFile")) {
        while (index > 0) {
            walk.StepTo(members, --index);
        }
    }

    unsigned long long sum = walk.GetCurrentFileSize();
    if (walk.m_Current == m_Current) {
        throughCurrent = static_cast<long long>(sum);
    }
    if (ReportEmpty(members.Count(), "GetNextFile")) {
        return sum;
    }
    for (index = std::max(index, 0) + 1; index < members.Count(); ++index) {
        walk.StepTo(members, index);
        sum += walk.GetCurrentFileSize();
        if (walk.m_Current == m_Current) {
            throughCurrent = static_cast<long long>(sum);
        }
    }
    return sum;
}
