#include "host/library/VolumeNames.h"

#include <dirent.h>
#include <glib.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <climits>
#include <cstdlib>
#include <memory>

namespace host {
namespace {

constexpr size_t kLongestName = 120;
constexpr int kMostLabels = 256;
constexpr const char* kNameless = "Disk";

// udev writes what is not plain as "\x" and two hexadecimal digits.
std::string Decoded(const std::string& label)
{
    std::string plain;
    for (size_t i = 0; i < label.size(); ++i) {
        const auto digit = [&](size_t at) { return std::isxdigit(static_cast<unsigned char>(label[at])) != 0; };
        const bool escape = label[i] == '\\' && label.size() - i > 3 && label[i + 1] == 'x' && digit(i + 2) && digit(i + 3);
        plain += escape ? char(std::stoi(label.substr(i + 2, 2), nullptr, 16)) : label[i];
        i += escape ? 3 : 0;
    }
    return plain;
}

std::string Resolved(const std::string& path)
{
    std::array<char, PATH_MAX> whole;
    return realpath(path.c_str(), whole.data()) == nullptr ? "" : whole.data();
}

std::string Numbered(const std::string& name, int number)
{
    return number == 1 ? name : name + " (" + std::to_string(number) + ")";
}

bool IsNumbered(const std::string& name, const std::string& base)
{
    if (name == base) {
        return true;
    }
    const bool inBrackets = name.starts_with(base + " (") && name.ends_with(')');
    return inBrackets && std::all_of(name.begin() + ptrdiff_t(base.size()) + 2, name.end() - 1, [](unsigned char c) { return std::isdigit(c) != 0; });
}

}    // namespace

std::string CleanVolumeName(const std::string& name)
{
    const std::unique_ptr<char, void (*)(void*)> valid(g_utf8_make_valid(name.c_str(), -1), g_free);
    std::string clean = valid.get();
    for (char& c : clean) {
        c = c == '/' || static_cast<unsigned char>(c) < ' ' || c == 0x7F ? '_' : c;
    }
    if (clean.size() > kLongestName) {
        clean.resize(static_cast<size_t>(g_utf8_find_prev_char(clean.c_str(), clean.c_str() + kLongestName + 1) - clean.c_str()));
    }
    while (!clean.empty() && clean.back() == ' ') {
        clean.pop_back();
    }
    clean.erase(0, clean.find_first_not_of(' '));
    if (clean.starts_with('.')) {
        clean[0] = '_';
    }
    return clean.empty() ? kNameless : clean;
}

std::vector<VolumeLink> NameVolumes(const std::vector<VolumeLink>& wanted, const std::vector<VolumeLink>& current, const std::set<std::string>& taken)
{
    std::vector<VolumeLink> named = wanted;
    std::set<std::string> used = taken;
    std::vector<VolumeLink*> fresh;
    for (VolumeLink& volume : named) {
        volume.name = CleanVolumeName(volume.name);
        const auto kept = std::find_if(current.begin(), current.end(),
            [&](const VolumeLink& link) { return link.target == volume.target && IsNumbered(link.name, volume.name) && used.count(link.name) == 0; });
        if (kept == current.end()) {
            fresh.push_back(&volume);
        } else {
            volume.name = kept->name;
            used.insert(kept->name);
        }
    }
    for (VolumeLink* const volume : fresh) {
        int number = 1;
        while (!used.insert(Numbered(volume->name, number)).second) {
            ++number;
        }
        volume->name = Numbered(volume->name, number);
    }
    return named;
}

std::map<std::string, std::string> VolumeLabels(const std::string& folder)
{
    std::map<std::string, std::string> labels;
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(folder.c_str()), closedir);
    for (int i = 0; dir != nullptr && i < kMostLabels; ++i) {
        const dirent* const entry = readdir(dir.get());
        if (entry == nullptr) {
            break;
        }
        const std::string device = entry->d_name[0] == '.' ? "" : Resolved(folder + "/" + entry->d_name);
        if (!device.empty()) {
            labels[device] = Decoded(entry->d_name);
        }
    }
    return labels;
}

}    // namespace host
