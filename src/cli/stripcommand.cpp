// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/foldercleaner.h"
#include "core/app/programstate.h"
#include "core/tags/store/tagstore.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

constexpr Option V1Option{u"--v1", {}, u"remove the ID3v1 tag"};
constexpr Option V2Option{u"--v2", {}, u"remove the ID3v2 tag"};

int runStrip(const Arguments &arguments, Console &console)
{
    const bool stripsV1 = arguments.has(V1Option.name);
    const bool stripsV2 = arguments.has(V2Option.name);
    if (!stripsV1 && !stripsV2)
        return console.refuse(u"strip"_s, u"--v1, --v2 or both must be given"_s);
    ProgramState state;
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    TagStore store(state, fileSystem);
    FolderCleaner cleaner(fileSystem);
    for (const QString &path : arguments.paths()) {
        cleaner.cleanFolderOf(path);
        Result<void> stripped;
        if (stripsV1)
            stripped = store.RemoveV1(path);
        if (stripped && stripsV2)
            stripped = store.RemoveV2(path);
        if (!stripped)
            console.fail(path, stripped.error());
    }
    return console.status();
}

} // namespace

Command stripCommand()
{
    return {u"strip", u"remove the ID3v1 or the ID3v2 tags of files",
        u"Removes tags from each file. A read-only file is left alone; a file without such a tag is no error.", u"FILE",
        true, {V1Option, V2Option}, runStrip};
}

} // namespace ravlin::cli
