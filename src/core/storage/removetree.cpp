#include "core/storage/removetree.h"

#include "core/storage/leftovers.h"
#include "core/platform/nodes.h"

namespace ravlin::platform {

Result<void> removeTree(FileSystem &fileSystem, const QString &path)
{
    const Result<Node> node = nodeAt(path);
    if (!node)
        return tl::unexpected(node.error());
    if (node->kind != NodeKind::Folder)
        return fileSystem.remove(path);
    const Result<std::vector<QString>> names = fileSystem.names(path);
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        if (auto removed = removeTree(fileSystem, inFolder(path, name)); !removed)
            return removed;
    }
    return fileSystem.removeFolder(path);
}

} // namespace ravlin::platform
