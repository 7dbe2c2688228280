// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renaming.h"

#include "core/platform/path.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

/// Nearly the form by which a file system that ignores case compares names. What it misses, the rename finds taken.
QString folded(const QString &name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

QString withOtherCase(const QString &name)
{
    QString other = name;
    for (QChar &c : other) {
        if (c >= u'a' && c <= u'z')
            c = c.toUpper();
        else if (c >= u'A' && c <= u'Z')
            c = c.toLower();
    }
    return other;
}

std::size_t countRows(const std::vector<RenameRow> &rows, RenameState state)
{
    return static_cast<std::size_t>(std::ranges::count(rows, state, &RenameRow::state));
}

} // namespace

/// The inside of a plan: the names in the folders concerned as numbered slots, and for each row the slots it leaves and
/// takes. Names are compared only while the draft is made; after that it works on numbers.
class RenamingPlan::Draft
{
public:
    static constexpr int None = -1;

    Draft(platform::FileSystem &fileSystem, std::vector<RenameRow> given);

    void resolve();
    int occupantOf(std::size_t row) const; ///< or None

    std::vector<RenameRow> rows;
    std::vector<int> openClashes; ///< in the order to ask about them
    std::vector<std::optional<ClashAnswer>> answers;
    std::optional<ClashAnswer> answerForAll;

private:
    /// A name in a folder, borne by a file or not.
    struct Slot
    {
        bool exists = false;
        bool isWanted = false; ///< by some row
        int mover = None;      ///< the row whose file bears the name
        int claimant = None;   ///< the row that gets it
        int nextNumber = 2;    ///< the lowest that may be free
    };
    struct FolderNames
    {
        QString canonical;
        bool exists = false;
        bool isListed = false;
        bool ignoresCase = false;
        std::optional<Error> error = {}; ///< why nothing can be put there
        QHash<QString, int> slotOfName;
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
    bool leadsIntoItself(int row, const FolderNames &target) const;
    void refuse(int row, ErrorCode code, const QString &path, const QString &detail);

    void beginResolving();
    void claimInOrder();
    void settle(int row);
    void stay(int row, RenameState state);
    void takeNumber(int row);
    void stopAt(int row);
    void drainQueue();
    void tellCollisionsApart();

    platform::FileSystem &m_fileSystem;
    std::vector<FolderNames> m_folders;
    QHash<QString, int> m_folderOfSpelling;
    QHash<QString, int> m_folderOfCanonical;
    QString m_lastSpelling;
    int m_lastFolder = None;
    std::vector<Slot> m_slots;
    std::vector<Place> m_source;
    std::vector<Place> m_wanted;
    std::vector<bool> m_isFixed; ///< refused or untouched whatever the answers
    std::vector<int> m_target;   ///< the slot that a row gets
    std::vector<bool> m_moves;
    std::vector<int> m_queue; ///< rows whose new name turned out to be taken
    int m_end = 0;            ///< the first row after a Stop
};

RenamingPlan::Draft::Draft(platform::FileSystem &fileSystem, std::vector<RenameRow> given)
    : rows(std::move(given)), answers(rows.size()), m_fileSystem(fileSystem), m_source(rows.size()),
      m_wanted(rows.size()), m_isFixed(rows.size(), false), m_target(rows.size(), None), m_moves(rows.size(), false)
{
    for (RenameRow &row : rows) {
        row.path = row.from;
        if (row.problem)
            row.state = RenameState::Refused;
    }
    const int count = static_cast<int>(rows.size());
    const bool hasWork = std::ranges::any_of(rows, [](const RenameRow &row) { return row.from != row.wanted; });
    // Collect the names being vacated before looking for free ones.
    for (int row = 0; row < count && hasWork; ++row)
        m_isFixed[row] = !placeSource(row);
    for (int row = 0; row < count && hasWork; ++row)
        m_isFixed[row] = m_isFixed[row] || !placeTarget(row);
    if (!hasWork)
        m_isFixed.assign(m_isFixed.size(), true);
    resolve();
}

void RenamingPlan::Draft::refuse(int row, ErrorCode code, const QString &path, const QString &detail)
{
    rows[row].state = RenameState::Refused;
    rows[row].error = Error{code, path, detail};
}

/// The number of a path's folder. sourceFolder: the folder that the file is in; None to get that one.
int RenamingPlan::Draft::folderOf(const QString &path, int sourceFolder)
{
    // Most rows share the folder of the row before.
    const qsizetype start = platform::nameStart(path);
    if (m_lastFolder != None && start == m_lastSpelling.size() && path.startsWith(m_lastSpelling))
        return m_lastFolder;
    const QString spelled = path.first(start);
    const auto known = m_folderOfSpelling.constFind(spelled);
    m_lastFolder = known != m_folderOfSpelling.cend() ? *known : addFolder(spelled, sourceFolder);
    m_lastSpelling = spelled;
    m_folderOfSpelling.insert(spelled, m_lastFolder);
    return m_lastFolder;
}

int RenamingPlan::Draft::addFolder(const QString &spelled, int sourceFolder)
{
    FolderNames folder;
    folder.ignoresCase = sourceFolder != None && m_folders[sourceFolder].ignoresCase;
    const QString path = spelled.isEmpty() ? QStringLiteral(".") : spelled;
    // What is missing of the path keeps its spelling.
    QString existing = platform::withoutEndSeparator(path);
    QString missing;
    Result<QString> canonical = m_fileSystem.canonicalPath(existing);
    while (!canonical && canonical.error().code == ErrorCode::NotFound) {
        const qsizetype start = platform::nameStart(existing);
        if (start == 0 || start == existing.size())
            break;
        missing.prepend(platform::Separator + existing.sliced(start));
        existing = platform::folderOf(existing);
        canonical = m_fileSystem.canonicalPath(existing);
    }
    folder.canonical = canonical.value_or(existing) + (folder.ignoresCase ? folded(missing) : missing);
    if (const auto known = m_folderOfCanonical.constFind(folder.canonical); known != m_folderOfCanonical.cend())
        return *known;
    folder.exists = canonical.has_value() && missing.isEmpty();
    if (const auto info = m_fileSystem.info(existing); info && !info->isFolder)
        folder.error = Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")};
    const int number = static_cast<int>(m_folders.size());
    m_folderOfCanonical.insert(folder.canonical, number);
    m_folders.push_back(std::move(folder));
    return number;
}

/// probeName: a name in the folder, used to learn whether the folder ignores case; may be empty.
void RenamingPlan::Draft::listFolder(FolderNames &folder, const QString &probeName)
{
    folder.isListed = true;
    if (!folder.exists)
        return;
    const Result<std::vector<QString>> names = m_fileSystem.names(folder.canonical);
    if (!names) {
        if (!folder.error)
            folder.error = names.error();
        return;
    }
    const QString probe = probeName.isEmpty() && !names->empty() ? names->front() : probeName;
    if (const QString other = withOtherCase(probe); other != probe) {
        const QString path = platform::inFolder(folder.canonical, other);
        folder.ignoresCase = std::ranges::find(*names, other) == names->end() && m_fileSystem.info(path).has_value();
    }
    folder.slotOfName.reserve(static_cast<qsizetype>(names->size()) * 2);
    m_slots.reserve(m_slots.size() + names->size() * 2);
    for (const QString &name : *names) {
        folder.slotOfName.insert(folder.ignoresCase ? folded(name) : name, static_cast<int>(m_slots.size()));
        m_slots.push_back({.exists = true});
    }
}

int RenamingPlan::Draft::slotOf(int folder, const QString &name)
{
    FolderNames &names = m_folders[folder];
    if (!names.isListed)
        listFolder(names, {});
    const QString key = names.ignoresCase ? folded(name) : name;
    const auto found = names.slotOfName.constFind(key);
    if (found != names.slotOfName.cend())
        return *found;
    const int slot = static_cast<int>(m_slots.size());
    names.slotOfName.insert(key, slot);
    m_slots.push_back({});
    return slot;
}

/// Returns false if the row's file can't be renamed at all.
bool RenamingPlan::Draft::placeSource(int row)
{
    const QString &from = rows[row].from;
    const int folder = folderOf(from, None);
    const QString name = platform::nameOf(from);
    if (!m_folders[folder].isListed)
        listFolder(m_folders[folder], name);
    const int slot = slotOf(folder, name);
    m_source[row] = {folder, slot};
    if (rows[row].state == RenameState::Refused)
        return false;
    if (!m_slots[slot].exists) {
        refuse(row, ErrorCode::NotFound, from, QStringLiteral("no such file"));
        return false;
    }
    if (m_slots[slot].mover != None) {
        refuse(row, ErrorCode::GivenTwice, from, {});
        return false;
    }
    m_slots[slot].mover = row;
    return true;
}

/// Returns false if the row keeps its name whatever the answers.
bool RenamingPlan::Draft::placeTarget(int row)
{
    const QString &from = rows[row].from;
    const QString &wanted = rows[row].wanted;
    if (wanted == from)
        return false;
    const int folder = folderOf(wanted, m_source[row].folder);
    const QString name = platform::nameOf(wanted);
    const int slot = slotOf(folder, name);
    if (const auto &error = m_folders[folder].error) {
        refuse(row, error->code, error->path, error->detail);
        return false;
    }
    // The folder may be spelled in another way.
    const bool isSame = slot == m_source[row].slot && name == platform::nameOf(from);
    m_wanted[row] = {folder, slot};
    m_slots[slot].isWanted = !isSame;
    if (folder != m_source[row].folder && leadsIntoItself(row, m_folders[folder])) {
        refuse(row, ErrorCode::IntoItself, from, {});
        return false;
    }
    rows[row].makesFolder = !m_folders[folder].exists;
    return !isSame;
}

/// Whether the row is a folder and the target lies in it. A link to a folder may go into that folder.
bool RenamingPlan::Draft::leadsIntoItself(int row, const FolderNames &target) const
{
    const FolderNames &source = m_folders[m_source[row].folder];
    const QString own = platform::inFolder(source.canonical, platform::nameOf(rows[row].from)) + platform::Separator;
    const QString into = target.canonical + platform::Separator;
    return source.ignoresCase ? folded(into).startsWith(folded(own)) : into.startsWith(own);
}

int RenamingPlan::Draft::occupantOf(std::size_t row) const
{
    const int mover = m_slots[m_target[row]].mover;
    return mover != None && m_moves[mover] ? mover : None;
}

void RenamingPlan::Draft::beginResolving()
{
    for (Slot &slot : m_slots) {
        slot.claimant = None;
        slot.nextNumber = 2;
    }
    openClashes.clear();
    m_queue.clear();
    m_end = static_cast<int>(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        m_moves[row] = !m_isFixed[row];
        if (m_isFixed[row])
            continue;
        rows[row].state = RenameState::Rename;
        rows[row].path = rows[row].wanted;
        rows[row].isNumbered = false;
        rows[row].isCollision = false;
        rows[row].isGivenToAnother = false;
        m_target[row] = m_wanted[row].slot;
    }
}

/// Every row claims its wanted name; the first in order gets it.
void RenamingPlan::Draft::claimInOrder()
{
    for (int row = 0; row < m_end; ++row) {
        if (!m_moves[row])
            continue;
        Slot &slot = m_slots[m_target[row]];
        const bool isFreed = !slot.exists || (slot.mover != None && m_moves[slot.mover]);
        if (isFreed && slot.claimant == None)
            slot.claimant = row;
        else
            settle(row);
    }
}

/// The row's wanted name is taken.
void RenamingPlan::Draft::settle(int row)
{
    rows[row].isCollision = true;
    const std::optional<ClashAnswer> answer = answers[row] ? answers[row] : answerForAll;
    if (!answer) {
        openClashes.push_back(row);
        stay(row, RenameState::Clash);
    } else if (*answer == ClashAnswer::KeepBoth) {
        takeNumber(row);
    } else if (*answer == ClashAnswer::Stop) {
        stopAt(row);
    } else {
        stay(row, RenameState::Skipped);
    }
}

/// The row keeps its name, which another row may have claimed.
void RenamingPlan::Draft::stay(int row, RenameState state)
{
    rows[row].state = state;
    rows[row].path = rows[row].from;
    rows[row].isNumbered = false;
    if (!m_moves[row])
        return;
    m_moves[row] = false;
    if (Slot &target = m_slots[m_target[row]]; target.claimant == row)
        target.claimant = None;
    const int claimant = std::exchange(m_slots[m_source[row].slot].claimant, None);
    if (claimant != None && claimant != row)
        m_queue.push_back(claimant);
}

void RenamingPlan::Draft::takeNumber(int row)
{
    const auto [folder, wanted] = m_wanted[row];
    const QString &to = rows[row].wanted;
    const QString prefix = platform::folderPrefix(to);
    const QString name = platform::nameOf(to);
    // Keep a number from an earlier run, so that running the same batch again changes nothing.
    const QString &from = rows[row].from;
    const QString ownName = platform::nameOf(from);
    const qsizetype bracket = ownName.lastIndexOf(u'(');
    const int ownNumber = QStringView(ownName).mid(bracket + 1, ownName.lastIndexOf(u')') - bracket - 1).toInt();
    rows[row].isNumbered = true;
    if (m_source[row].folder == folder && !m_slots[m_source[row].slot].isWanted && ownNumber >= 2 &&
        platform::numberedName(name, ownNumber, rows[row].kind) == ownName) {
        stay(row, RenameState::Untouched);
        rows[row].isNumbered = true;
        return;
    }
    for (int number = m_slots[wanted].nextNumber;; ++number) {
        const QString numbered = platform::numberedName(name, number, rows[row].kind);
        const int slot = slotOf(folder, numbered); // may move m_slots
        const Slot &found = m_slots[slot];
        if (found.exists || found.isWanted || found.claimant != None)
            continue;
        m_slots[wanted].nextNumber = number + 1;
        m_slots[slot].claimant = row;
        m_target[row] = slot;
        rows[row].path = prefix + numbered;
        return;
    }
}

void RenamingPlan::Draft::stopAt(int row)
{
    if (row >= m_end)
        return;
    const int last = std::min(m_end, static_cast<int>(rows.size()) - 1);
    for (int behind = row + 1; behind <= last; ++behind) {
        if (!m_isFixed[behind])
            stay(behind, RenameState::NotTaken);
    }
    m_end = row;
    stay(row, RenameState::Stopped);
}

/// A row that keeps its name takes it from another, which may then keep its own, and so on.
void RenamingPlan::Draft::drainQueue()
{
    while (!m_queue.empty()) {
        const int row = m_queue.back();
        m_queue.pop_back();
        if (m_moves[row])
            settle(row);
    }
}

/// A name is taken by what bears it, or else by the row that gets it.
void RenamingPlan::Draft::tellCollisionsApart()
{
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (!rows[row].isCollision)
            continue;
        const Slot &wanted = m_slots[m_wanted[row].slot];
        const bool isOwn = wanted.mover == static_cast<int>(row);
        const bool isLeft = wanted.mover != None && m_moves[wanted.mover];
        rows[row].isGivenToAnother = !wanted.exists || isOwn || isLeft;
    }
}

void RenamingPlan::Draft::resolve()
{
    beginResolving();
    claimInOrder();
    drainQueue();
    tellCollisionsApart();
    // Drop rows after a stop; they need no answer any more.
    std::erase_if(openClashes, [this](int row) { return row >= m_end; });
    std::erase_if(openClashes, [this](int row) { return rows[row].state != RenameState::Clash; });
}

RenamingPlan::RenamingPlan(platform::FileSystem &fileSystem, std::vector<RenameRow> rows)
    : m_draft(std::make_unique<Draft>(fileSystem, std::move(rows)))
{
}

RenamingPlan::RenamingPlan(RenamingPlan &&) noexcept = default;
RenamingPlan &RenamingPlan::operator=(RenamingPlan &&) noexcept = default;
RenamingPlan::~RenamingPlan() = default;

const std::vector<RenameRow> &RenamingPlan::rows() const
{
    return m_draft->rows;
}

std::optional<std::size_t> RenamingPlan::nextClash() const
{
    if (m_draft->openClashes.empty())
        return std::nullopt;
    return static_cast<std::size_t>(m_draft->openClashes.front());
}

void RenamingPlan::answer(std::size_t row, ClashAnswer answer)
{
    m_draft->answers[row] = answer;
    m_draft->resolve();
}

void RenamingPlan::answerAll(ClashAnswer answer)
{
    m_draft->answerForAll = answer;
    m_draft->resolve();
}

std::size_t RenamingPlan::count(RenameState state) const
{
    return countRows(m_draft->rows, state);
}

std::optional<std::size_t> RenamingPlan::occupantOf(std::size_t row) const
{
    const int occupant = m_draft->occupantOf(row);
    return occupant == Draft::None ? std::nullopt : std::optional(static_cast<std::size_t>(occupant));
}

std::size_t RenamingOutcome::count(RenameState state) const
{
    return countRows(rows, state);
}

} // namespace ravlin
