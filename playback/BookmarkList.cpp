#include "playback/BookmarkList.h"

#include <algorithm>
#include <utility>

namespace {

bool SortsBefore(const tagBookmark& a, const tagBookmark& b)
{
    const int order = a.name.Str().compare(b.name.Str());
    return order != 0 ? order < 0 : a.position < b.position;
}

}    // namespace

void BookmarkList::AddBookmark(const char* name, long long position)
{
    auto mark = std::make_unique<tagBookmark>(tagBookmark {name, position});
    const int index = LocateBookmark(mark.get());
    m_Marks.insert(m_Marks.begin() + index, std::move(mark));
}

void BookmarkList::AddBookmarks(std::vector<tagBookmark> marks)
{
    for (tagBookmark& mark : marks) {
        m_Marks.push_back(std::make_unique<tagBookmark>(std::move(mark)));
    }
    std::stable_sort(m_Marks.begin(), m_Marks.end(), [](const auto& a, const auto& b) { return SortsBefore(*a, *b); });
}

int BookmarkList::LocateBookmark(const tagBookmark* key) const
{
    const auto after
        = std::upper_bound(m_Marks.begin(), m_Marks.end(), *key, [](const tagBookmark& k, const auto& mark) { return SortsBefore(k, *mark); });
    return static_cast<int>(after - m_Marks.begin());
}

int BookmarkList::GetNext(const tagBookmark* key) const
{
    if (m_Marks.empty()) {
        std::printf("No bookmarks\n");
        return -1;
    }
    const int index = LocateBookmark(key);
    return index == Size() ? 0 : index;
}

int BookmarkList::GetPrev(const tagBookmark* key, bool skipOne) const
{
    if (m_Marks.empty()) {
        std::printf("No bookmarks\n");
        return -1;
    }
    int index = LocateBookmark(key);
    for (int steps = skipOne ? 2 : 1; steps > 0; --steps) {
        index = index > 0 ? index - 1 : Size() - 1;
    }
    return index;
}

tagBookmark* BookmarkList::Get(int index) const
{
    return index >= 0 && index < Size() ? m_Marks[static_cast<size_t>(index)].get() : nullptr;
}

bool BookmarkList::ClearBookmark(int index)
{
    if (Get(index) == nullptr) {
        std::printf("ClearBookmark: Internal error!\n");
        return false;
    }
    m_Marks.erase(m_Marks.begin() + index);
    return true;
}

void BookmarkList::Clear()
{
    m_Marks.clear();
}

void BookmarkList::Save(char key, std::string& out) const
{
    for (const auto& mark : m_Marks) {
        if (mark->name.Contains("\n", true)) {
            continue;    // no line can hold it, and its second half would read as a line of its own
        }
        out += CascadeString::Format("%c %s@%lld\n", key, mark->name.Text(), mark->position).Str();
    }
}
