// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"

namespace ravlin {

/// The inside of a plan: the names of the folders concerned as numbered slots, and for each row the slots it leaves and
/// takes. Names are compared once, when the draft is made; all that follows works on numbers.
class RenamingPlan::Draft
{
public:
    static constexpr int None = -1;

    Draft(platform::FileSystem &fileSystem, std::vector<RenameWish> wishes);

    void resolve();
    /// The row that has to go before this one can: it bears the name that this one gets. The row itself where the
    /// file system takes both names for the same. None: the name is free.
    int occupantOf(std::size_t row) const;

    std::vector<RenameRow> rows;
    std::vector<int> openClashes; ///< in the order in which they are to be asked about
    std::vector<std::optional<ClashAnswer>> answers;
    std::optional<ClashAnswer> answerForAll;

private:
    /// A name in a folder, whether or not something bears it.
    struct Slot
    {
        bool exists = false;
        bool isWanted = false; ///< by some row's wish
        int mover = None;      ///< the row whose file bears the name
        int claimant = None;   ///< the row that gets it
        int nextNumber = 2;    ///< the lowest that may be free for a numbered name
    };
    struct FolderNames
    {
        QString canonical;
        bool exists = false;
        bool isListed = false;
        bool ignoresCase = false;
        std::optional<Error> error = {}; ///< why nothing can be put there
        QHash<QString, int> slots_;
    };
    struct Place
    {
        int folder = None;
        int slot = None;
    };

    int folderOf(const QString &path, int sourceFolder);
    int addFolder(const QString &spelled, int sourceFolder);
    void listFolder(FolderNames &folder, const QString &probeName);
    int slotOf(int folder, const QString &name);
    bool placeSource(int row);
    bool placeTarget(int row);
    void refuse(int row, ErrorCode code, const QString &path, const QString &detail);

    void beginResolving();
    void claimInOrder();
    void settle(int row);
    void stay(int row, RenameState state);
    void takeNumber(int row);
    void stopAt(int row);
    void drainQueue();

    platform::FileSystem &m_fileSystem;
    std::vector<RenameWish> m_wishes;
    std::vector<FolderNames> m_folders;
    QHash<QString, int> m_folderOfSpelling;
    QHash<QString, int> m_folderOfCanonical;
    QString m_lastSpelling;
    int m_lastFolder = None;
    std::vector<Slot> m_slots;
    std::vector<Place> m_source;
    std::vector<Place> m_wanted;
    std::vector<bool> m_isFixed; ///< refused or untouched whatever is answered
    std::vector<int> m_target;   ///< the slot that a row gets
    std::vector<bool> m_moves;
    std::vector<int> m_queue; ///< rows whose new name turned out to be taken
    int m_end = 0;            ///< the first row that is not taken
};

} // namespace ravlin
