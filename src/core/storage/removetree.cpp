// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/storage/removetree.h"

#include "core/platform/nodes.h"
#include "core/platform/path.h"

namespace ravlin::storage {

Result<void> removeTree(platform::FileSystem &fileSystem, const QString &path)
{
    const Result<platform::Node> node = platform::nodeAt(path);
    if (!node)
        return tl::unexpected(node.error());
    if (node->kind != platform::NodeKind::Folder)
        return fileSystem.remove(path);
    const Result<std::vector<QString>> names = fileSystem.names(path);
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        if (auto removed = removeTree(fileSystem, platform::inFolder(path, name)); !removed)
            return removed;
    }
    return fileSystem.removeFolder(path);
}

} // namespace ravlin::storage
