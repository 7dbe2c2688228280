// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/transfer.h"
#include "core/platform/namecheck.h"
#include "core/platform/path.h"
#include "core/storage/saferename.h"
#include "core/storage/safewrite.h"

namespace ravlin {

namespace {

using platform::Node;
using platform::NodeKind;

Error failure(ErrorCode code, const QString &path, const QString &detail = {})
{
    return {code, path, detail};
}

/// Equal for all spellings of a path, as far as can be known without asking the file system.
QString keyOf(const QString &path)
{
    return platform::NameCase == Qt::CaseSensitive ? path : path.toCaseFolded();
}

bool isInside(const QString &path, const QString &folder)
{
    return keyOf(platform::withEndSeparator(path)).startsWith(keyOf(platform::withEndSeparator(folder)));
}

/// Where an item really is: resolves links above it, but not the item itself.
Result<QString> placeOf(platform::FileSystem &fileSystem, const QString &path)
{
    return fileSystem.canonicalPath(platform::folderOf(path)).map([&](const QString &folder) {
        return platform::inFolder(folder, platform::nameOf(path));
    });
}

class Planner
{
public:
    Planner(platform::FileSystem &fileSystem, const TransferRequest &request, std::stop_token stop)
        : m_fileSystem(fileSystem), m_request(request), m_stop(std::move(stop))
    {
    }

    Result<TransferPlan> make();

private:
    TransferItem plan(const QString &source, const QString &target, bool isTopLevel);
    std::optional<Error> refusal(const TransferItem &item);
    std::optional<Clash> clashOf(const TransferItem &item, bool isTopLevel);
    void walk(TransferItem &item);
    qint64 measure(const QString &folder);

    platform::FileSystem &m_fileSystem;
    const TransferRequest &m_request;
    const std::stop_token m_stop;
    QString m_folder; ///< the target, links resolved
    TransferPlan m_plan;
    QHash<QString, Node> m_claimed; ///< by path: the source that gets it
};

Result<TransferPlan> Planner::make()
{
    m_plan.kind = m_request.kind;
    const QString folder = platform::withoutEndSeparator(m_request.folder);
    const auto info = m_fileSystem.info(folder);
    if (!info)
        return tl::unexpected(info.error());
    if (!info->isFolder)
        return tl::unexpected(failure(ErrorCode::NotAFolder, folder));
    const auto canonical = m_fileSystem.canonicalPath(folder);
    if (!canonical)
        return tl::unexpected(canonical.error());
    m_folder = *canonical;
    if (!m_request.newName.isEmpty() && (!platform::isPlainName(m_request.newName) || m_request.sources.size() != 1))
        return tl::unexpected(failure(ErrorCode::InvalidArgument, m_request.newName, QStringLiteral("not a name")));

    for (const QString &given : m_request.sources) {
        const QString source = platform::withoutEndSeparator(given);
        const QString name = m_request.newName.isEmpty() ? platform::nameOf(source) : m_request.newName;
        m_plan.items.push_back(plan(source, platform::inFolder(folder, name), true));
        if (m_stop.stop_requested())
            return tl::unexpected(failure(ErrorCode::Cancelled, source));
    }
    return std::move(m_plan);
}

TransferItem Planner::plan(const QString &source, const QString &target, bool isTopLevel)
{
    TransferItem item;
    item.source = source;
    item.target = target;
    const auto recovered = storage::recoverNamed(m_fileSystem, source);
    const auto node = platform::nodeAt(source);
    if (!node) {
        item.error = node.error();
        return item;
    }
    item.node = *node;
    if (isTopLevel)
        item.error = refusal(item);
    // What it holds may be copied, but moved away it would lose the redo file beside it.
    if (!recovered && (m_plan.kind == TransferKind::Move || recovered.error().code != ErrorCode::Interrupted))
        item.error = recovered.error();
    if (item.error)
        return item;
    item.clash = clashOf(item, isTopLevel);
    if (item.clash && item.clash->isMerge && item.clash->canReplace)
        walk(item);
    else if (item.node.kind == NodeKind::Folder)
        item.bytes = measure(source);
    else if (item.node.kind == NodeKind::File)
        item.bytes = item.node.info.size;
    m_plan.targets.insert(keyOf(target));
    m_claimed.insert(keyOf(target), item.node);
    return item;
}

std::optional<Error> Planner::refusal(const TransferItem &item)
{
    if (!platform::isPlainName(platform::nameOf(item.source)))
        return failure(ErrorCode::NoOwnName, item.source);
    if (item.node.kind == NodeKind::Folder) {
        const auto real = m_fileSystem.canonicalPath(item.source);
        if (!real)
            return real.error();
        if (isInside(m_folder, *real))
            return failure(ErrorCode::IntoItself, item.source);
    }
    const auto place = placeOf(m_fileSystem, item.source);
    if (!place)
        return place.error();
    const bool isSamePlace = *place == platform::inFolder(m_folder, platform::nameOf(item.target));
    if (isSamePlace && m_plan.kind == TransferKind::Move)
        return failure(ErrorCode::AlreadyExists, item.source, QStringLiteral("it is there already"));
    return std::nullopt;
}

std::optional<Clash> Planner::clashOf(const TransferItem &item, bool isTopLevel)
{
    Clash clash{item.source, item.target, item.node, {}};
    if (const QString key = keyOf(item.target); isTopLevel && m_claimed.contains(key)) {
        clash.targetNode = m_claimed.value(key);
        clash.canReplace = false;
        return clash;
    }
    const auto present = platform::nodeAt(item.target);
    if (!present)
        return std::nullopt; // free; if it can't be looked at, placing it fails
    clash.targetNode = *present;
    const bool isFolder = item.node.kind == NodeKind::Folder;
    const bool ontoFolder = present->kind == NodeKind::Folder;
    clash.isMerge = isFolder && ontoFolder;
    const auto place = placeOf(m_fileSystem, item.source);
    const auto aim = placeOf(m_fileSystem, item.target);
    const bool isOtherCase = place && aim && storage::isSameButForCase(m_fileSystem, *place, *aim);
    if (isOtherCase && m_plan.kind == TransferKind::Move)
        return std::nullopt; // the name is its own
    const bool isItself = isOtherCase || (place && aim && *place == *aim);
    clash.canReplace = isFolder == ontoFolder && !isItself && present->kind != NodeKind::Other &&
                       !(isFolder && present->isSameAs(item.node));
    clash.hasTrash = !clash.canReplace || clash.isMerge || platform::hasTrash(item.target);
    return clash;
}

void Planner::walk(TransferItem &item)
{
    const auto names = m_fileSystem.names(item.source);
    if (!names) {
        item.error = names.error();
        return;
    }
    for (const QString &name : *names) {
        if (m_stop.stop_requested())
            return;
        item.children.push_back(
            plan(platform::inFolder(item.source, name), platform::inFolder(item.target, name), false));
        item.bytes += item.children.back().bytes;
    }
}

/// Only for the progress: errors show when the files are copied.
qint64 Planner::measure(const QString &folder)
{
    qint64 bytes = 0;
    const auto names = m_fileSystem.names(folder);
    storage::recoverFolder(m_fileSystem, folder, names.value_or(std::vector<QString>()));
    for (const QString &name : names.value_or(std::vector<QString>())) {
        if (m_stop.stop_requested())
            break;
        const QString path = platform::inFolder(folder, name);
        const auto node = platform::nodeAt(path);
        if (node && node->kind == NodeKind::File)
            bytes += node->info.size;
        else if (node && node->kind == NodeKind::Folder)
            bytes += measure(path);
    }
    return bytes;
}

/// Asks about the clashes of a plan, in its order.
class Answering
{
public:
    Answering(TransferPlan &plan, const ClashChooser &choose) : m_plan(plan), m_choose(choose) {}

    bool answer(std::vector<TransferItem> &items);

private:
    bool decide(TransferItem &item);
    void keepBoth(TransferItem &item);

    TransferPlan &m_plan;
    const ClashChooser &m_choose;
    std::optional<ClashAnswer> m_forFolders;
    std::optional<ClashAnswer> m_forFiles;
};

bool Answering::answer(std::vector<TransferItem> &items)
{
    for (TransferItem &item : items) {
        if (item.error || !item.clash)
            continue;
        if (!decide(item))
            return false;
        if (item.isMerged() && !answer(item.children))
            return false;
    }
    return true;
}

bool Answering::decide(TransferItem &item)
{
    std::optional<ClashAnswer> &remembered = item.clash->isMerge ? m_forFolders : m_forFiles;
    std::optional<ClashAnswer> answer = remembered;
    if (!answer || (*answer == ClashAnswer::Replace && !item.clash->canReplace)) {
        const ClashDecision decision = m_choose(*item.clash);
        if (decision.answer == ClashAnswer::Stop)
            return false;
        answer = decision.answer;
        if (decision.forAll)
            remembered = answer;
    }
    if (*answer == ClashAnswer::Replace && !item.clash->canReplace)
        answer = ClashAnswer::Skip;
    item.answer = answer;
    if (*answer == ClashAnswer::KeepBoth)
        keepBoth(item);
    return true;
}

void Answering::keepBoth(TransferItem &item)
{
    const QString folder = platform::folderOf(item.target);
    const QString name = platform::nameOf(item.target);
    const auto kind = item.node.kind == NodeKind::Folder ? platform::NameKind::Folder : platform::NameKind::File;
    QString target;
    for (int number = 2; target.isEmpty() || m_plan.targets.contains(keyOf(target)) || platform::isTaken(target);
         ++number)
        target = platform::inFolder(folder, platform::numberedName(name, number, kind));
    item.target = target;
    m_plan.targets.insert(keyOf(target));
}

} // namespace

Result<TransferPlan> makeTransferPlan(
    platform::FileSystem &fileSystem, const TransferRequest &request, const std::stop_token &stop)
{
    return Planner(fileSystem, request, stop).make();
}

bool answerClashes(TransferPlan &plan, const ClashChooser &choose)
{
    return Answering(plan, choose).answer(plan.items);
}

} // namespace ravlin
