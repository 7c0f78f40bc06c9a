#include "playback/FileSettings.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view kSignature = "#Nuvid File. Do not modify";
constexpr std::string_view kComparedSignature = kSignature.substr(0, 12);
constexpr size_t kLongestLine = 349;
// No side file of ours comes near: the largest information file has 65536 chapters. What is larger is
// somebody else's, whatever it begins with.
constexpr off_t kLargestFile = 32 * 1024 * 1024;

// Decimal, blanks and a sign before it; 0 without a digit. Numbers out of range stop at the range's end.
long long ParseNumber(std::string_view text)
{
    const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(start);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    long long value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            break;
        }
        const int digit = c - '0';
        if (value < (LLONG_MIN + digit) / 10) {
            return negative ? LLONG_MIN : LLONG_MAX;
        }
        value = value * 10 - digit;    // below zero, where the range is one wider
    }
    if (negative) {
        return value;
    }
    return value == LLONG_MIN ? LLONG_MAX : -value;
}

int ParseInt(std::string_view text)
{
    return static_cast<int>(std::clamp<long long>(ParseNumber(text), INT_MIN, INT_MAX));
}

// The next line of `text`, which is taken off it: cut at the longest length, without line end.
std::string_view TakeLine(std::string_view& text)
{
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, std::min(end, kLongestLine));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    line = line.substr(0, line.find('\0'));
    while (line.size() > 1 && (line.back() == '\r' || line.back() == '\n')) {
        line.remove_suffix(1);
    }
    return line;
}

// "b NAME@POSITION": a name may hold an "@" itself, so the last one counts.
std::optional<tagBookmark> ParseMark(std::string_view line)
{
    const size_t at = line.rfind('@');
    if (at == std::string_view::npos || at == 0) {
        return std::nullopt;
    }
    const std::string_view name = at > 2 ? line.substr(2, at - 2) : std::string_view();
    return tagBookmark {CascadeString(name), ParseNumber(line.substr(at + 1))};
}

struct Marks {
    std::vector<tagBookmark> chapters;
    std::vector<tagBookmark> bookmarks;
};

void ParseLine(std::string_view line, FileState& state, Marks& marks)
{
    const std::string_view value = line.size() > 2 ? line.substr(2) : std::string_view();
    const char key = line.empty() ? '\0' : line[0];
    if (key == 'z') {
        state.zoomMode = ParseInt(value);
    } else if (key == 'v') {
        state.videoRes = ParseInt(value);
    } else if (key == 'a') {
        state.audioStream = ParseInt(value);
    } else if (key == 'b' || key == 'c' || key == 'r') {
        std::optional<tagBookmark> mark = ParseMark(line);
        if (!mark) {
            return;
        }
        if (key == 'r') {
            state.resume = std::move(mark);
        } else {
            (key == 'b' ? marks.bookmarks : marks.chapters).push_back(std::move(*mark));
        }
    }
}

}    // namespace

bool IsFileSettings(std::string_view text)
{
    return text.starts_with(kComparedSignature);
}

FileSettings ParseFileSettings(std::string_view text)
{
    FileSettings settings;
    if (!IsFileSettings(text)) {
        return settings;
    }
    TakeLine(text);
    Marks marks;
    while (!text.empty()) {
        ParseLine(TakeLine(text), settings.state, marks);
    }
    settings.chapters.AddBookmarks(std::move(marks.chapters));
    settings.bookmarks.AddBookmarks(std::move(marks.bookmarks));
    return settings;
}

std::string FormatFileSettings(const BookmarkList& chapters, const BookmarkList& bookmarks, const FileState& state)
{
    std::string text(kSignature);
    text += '\n';
    chapters.Save('c', text);
    bookmarks.Save('b', text);
    text += "z " + std::to_string(state.zoomMode) + "\n";
    if (state.resume && !state.resume->name.IsEmpty() && !state.resume->name.Contains("\n", true)) {
        text += "r " + state.resume->name.Str() + "@" + std::to_string(state.resume->position) + "\n";
    }
    if (state.videoRes != 0) {
        text += "v " + std::to_string(state.videoRes) + "\n";
    }
    if (state.audioStream) {
        text += "a " + std::to_string(*state.audioStream) + "\n";
    }
    return text;
}

std::optional<std::string> ReadSettingsText(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);    // a pipe of that name must not hold us up
    if (file < 0) {
        return std::nullopt;
    }
    std::optional<std::string> text;
    struct stat status { };
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        text.emplace();
    }
    if (text && status.st_size <= kLargestFile) {
        char block[4096];
        for (;;) {
            const ssize_t got = read(file, block, sizeof block);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                text.reset();
            }
            if (got <= 0) {
                break;
            }
            text->append(block, static_cast<size_t>(got));
            if (text->size() >= kComparedSignature.size() && !IsFileSettings(*text)) {
                break;    // somebody else's, of whatever size
            }
        }
    }
    close(file);
    return text;
}
