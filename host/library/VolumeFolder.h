// The folder with one link for each volume. It lies where every user may write ("/tmp"), so it is used only when it is
// this user's: a real folder that nobody else may write to, empty or with links of ours in it. Whatever else is found
// under its name is left completely alone, and so is everything in it that is no link of ours.
//
// Links:     ours are known by their targets, which begin with "/./": the same place, in a spelling that nobody types.
//            The viewer browses this folder, so it holds no file that tells more.
// Errors:    told by the result; a link that cannot be made is left out.
// Threads:   one at a time; several processes at once are kept apart by a lock on the folder.
// Ownership: the links stay when the program ends; the next one takes them over.
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
