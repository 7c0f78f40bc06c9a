// The folder with one link for each volume. It lies where every user may write ("/tmp"), so it is used only when this
// user made it: a real folder of ours that nobody else may write to, with our record in it. Whatever else is found under
// its name is left completely alone, and so is everything in it that the record does not name.
//
// Errors:    told by the result; a link that cannot be made is left out.
// Threads:   one at a time; several processes at once are kept apart by a lock on the folder.
// Ownership: the links stay when the program ends: the next one takes them over by the record.
#pragma once

#include <string>
#include <vector>

#include "host/library/VolumeNames.h"

namespace host {

class VolumeFolder {
public:
    enum class Result {
        kShown,
        kBusy,    // another player is at it: ask again later
        kNotOurs,    // or cannot be made
    };

    explicit VolumeFolder(std::string path);

    // Makes the folder show just these; names are made clean and unique. Links that are right are not touched.
    [[nodiscard]] Result Show(const std::vector<VolumeLink>& volumes) const;

private:
    std::string m_Path;
};

}    // namespace host
