// How the folder of volumes names what it shows.
//
// Units:   names are UTF-8, one component of a path, at most 120 bytes.
// Threads: any; VolumeLabels reads device folders only, which do not block.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace host {

struct VolumeLink {
    std::string name;
    std::string target;    // absolute
    friend bool operator==(const VolumeLink&, const VolumeLink&) = default;
};

// One component that every program can show: no slash, no control character, valid UTF-8, not hidden.
std::string CleanVolumeName(const std::string& name);

// Unique names for what is wanted (`wanted` has the names that it would like). A volume that has a link in
// `current` keeps its name; `taken` are names of others' files.
std::vector<VolumeLink> NameVolumes(
    const std::vector<VolumeLink>& wanted, const std::vector<VolumeLink>& current, const std::set<std::string>& taken);

// Labels of the disks by device path, from links as udev makes them in "/dev/disk/by-label".
std::map<std::string, std::string> VolumeLabels(const std::string& folder);

}    // namespace host
