// Words of the platform's own folder browser that the player's browser shares.
//
// Threads: constants.
#pragma once

class CascadeDirBrowser {
public:
    // What may be chosen. With folders alone plain files are listed only where a file filter asks for them.
    enum SelectableObjectType : int { kFilesAndFolders = 0, kFoldersOnly = 1, kFilesOnly = 2 };
};
