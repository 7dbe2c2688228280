// SPDX-License-Identifier: GPL-3.0-or-later
// Any command over any folder: nothing outside the folder changes, and inside it no file that is neither an MP3 file, a
// playlist nor named like a leftover of ours.
//
// An input is one byte for the command, one for its options, and then the folder's entries: a byte for the kind, one
// for the stem and one for the suffix of the name, one for what it leads to or holds, and for a kind with content one
// byte of length and that many bytes.
#include "cli/command.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"
#include "core/storage/redofile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace std::string_view_literals;
using namespace Qt::StringLiterals;
namespace platform = ravlin::platform;

namespace {

const std::string Text = "#!/bin/sh\n# start-up file\nexport PATH=/usr/bin:/bin\n";
const std::string Picture = "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1"s + std::string(64, '\3');

constexpr std::array Stems{"Band - Song"sv, "a"sv, "b"sv, "Band - Song\ntouch bait\n#"sv, "-rf"sv, "#EXTM3U"sv,
    ".hidden"sv, "run"sv, "a\xff"sv, "\xe2\x80\xaegpj"sv, "lista"sv, ".ravlin-0123456789abcdef"sv,
    "setup (ravlin-0123456789abcdef)"sv};
constexpr std::array Suffixes{".mp3"sv, ".MP3"sv, ".sh"sv, ""sv, ".m3u"sv, ".tmp"sv, ".redo"sv, ".mp3.exe"sv};
constexpr std::array Victims{"run.sh"sv, "cover.png"sv, "empty"sv, "private"sv, "private/key"sv, "missing"sv};

/// Takes the input apart byte by byte; zeros behind its end.
class Input
{
public:
    explicit Input(std::string_view bytes) : m_bytes(bytes) {}

    bool isEmpty() const { return m_bytes.empty(); }
    unsigned byte()
    {
        const unsigned value = m_bytes.empty() ? 0 : static_cast<unsigned char>(m_bytes.front());
        m_bytes.remove_prefix(m_bytes.empty() ? 0 : 1);
        return value;
    }
    template <typename Choices>
    auto choose(const Choices &choices)
    {
        return choices[byte() % choices.size()];
    }
    std::string text()
    {
        const size_t length = std::min<size_t>(byte() * 4, m_bytes.size());
        std::string taken(m_bytes.substr(0, length));
        m_bytes.remove_prefix(length);
        return taken;
    }

private:
    std::string_view m_bytes;
};

void require(bool condition, const std::string &what)
{
    if (condition)
        return;
    std::fprintf(stderr, "changed: %s\n", what.c_str());
    std::abort();
}

void write(const fs::path &path, std::string_view bytes, fs::perms permissions = fs::perms(0644))
{
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    std::error_code error; // a name that this system has not
    fs::permissions(path, permissions, error);
}

std::string read(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Every path below a folder with its kind, its permissions and its content or target.
using Snapshot = std::map<std::string, std::string>;

Snapshot snapshotOf(const fs::path &folder)
{
    Snapshot snapshot;
    for (const auto &entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_status status = entry.symlink_status();
        std::string what = std::to_string(int(status.type())) + " " + std::to_string(int(status.permissions())) + " ";
        if (fs::is_symlink(status))
            what += fs::read_symlink(entry.path()).string();
        else if (fs::is_regular_file(status))
            what += read(entry.path());
        snapshot[entry.path().lexically_relative(folder).string()] = what;
    }
    return snapshot;
}

bool mayChange(const std::string &path)
{
    const QString name = QFile::decodeName(path.substr(path.rfind('/') + 1).c_str());
    return name.endsWith(u".mp3"_s, Qt::CaseInsensitive) || name.endsWith(u".m3u"_s, Qt::CaseInsensitive) ||
           ravlin::storage::isLeftoverName(name);
}

void expectKept(const Snapshot &before, const Snapshot &after, bool (*isExempt)(const std::string &path))
{
    for (const auto &[path, what] : before) {
        const auto found = after.find(path);
        require(isExempt(path) || (found != after.end() && found->second == what), path);
    }
}

/// A complete record for finishing the overwriting of a file, from Text to what the input says.
void writeRedo(const fs::path &folder, const std::string &name, Input &input)
{
    const auto info = platform::FileSystem::native().info(QString::fromStdString((folder / name).string()));
    if (!info)
        return;
    ravlin::storage::RedoHeader header;
    const std::string fresh = input.text();
    header.inode = info->inode;
    header.newSize = qint64(fresh.size());
    header.oldSize = qint64(Text.size());
    header.oldModified = info->modified;
    header.name = QString::fromStdString(name);
    const auto held = platform::FileSystem::native().openFolder(QString::fromStdString(folder.string()));
    if (!held)
        return;
    const auto redo = (*held)->createNew(ravlin::storage::redoName(info->inode));
    if (!redo)
        return;
    static_cast<void>((*redo)->truncate(header.trailerOffset()));
    static_cast<void>(ravlin::storage::writeRedoHeader(**redo, header));
    static_cast<void>((*redo)->writeAt({fresh.data(), fresh.size()}, header.newOffset()));
    static_cast<void>((*redo)->writeAt({Text.data(), Text.size()}, header.oldOffset()));
    static_cast<void>(ravlin::storage::writeRedoTrailer(**redo, header));
}

void addEntry(const fs::path &folder, Input &input)
{
    const unsigned kind = input.byte() % 8;
    const fs::path path = folder / (std::string(input.choose(Stems)) + std::string(input.choose(Suffixes)));
    const std::string victim(input.choose(Victims));
    std::error_code error; // a name that is taken or that this system has not
    if (kind == 0) {
        fs::create_symlink(fs::path("..") / "outside" / victim, path, error);
    } else if (kind == 1 && (victim == "cover.png" || victim == "empty")) {
        // Nothing tells the others from an MP3 file: a key's bytes, and a script with a redo file beside it.
        fs::create_hard_link(folder.parent_path() / "outside" / victim, path, error);
    } else if (kind == 2) {
        fs::create_directory(path, error);
        fs::create_directory_symlink(folder.parent_path() / "outside" / "private", path / "in", error);
    } else if (kind == 3) {
        writeRedo(folder, path.filename().string(), input);
    } else if (!fs::exists(fs::symlink_status(path, error))) {
        const std::string head = kind == 4 ? Text : kind == 5 ? Picture : std::string();
        write(path, head + input.text(), fs::perms(kind == 6 ? 0444 : kind == 7 ? 0600 : 0644));
    }
}

QStringList words(const fs::path &music, const fs::path &target, Input &input)
{
    const unsigned command = input.byte();
    const unsigned option = input.byte();
    const QString mode = QString::number(option % 5 + 1);
    const QString text = option & 8 ? u"x/../\n\u202e"_s : u"T"_s;
    const QString folder = QString::fromStdU16String(music.u16string());
    const QList<QStringList> commands{{u"tag"_s, u"--mode"_s, mode, u"--title"_s, text},
        {u"multi"_s, u"--mode"_s, mode, u"--album"_s, text},
        {u"extract"_s, u"--mode"_s, mode, u"--pattern"_s, u"%1 - %3"_s},
        {u"strip"_s, option & 1 ? u"--v1"_s : u"--v2"_s},
        {u"rename"_s, u"--clash"_s, u"number"_s, u"--pattern"_s, option & 1 ? u"%3"_s : u"%1/%2"_s}, {u"show"_s},
        {u"info"_s},
        {u"copy"_s, u"--to"_s, QString::fromStdU16String(target.u16string()), u"--clash"_s,
            option & 1 ? u"replace"_s : u"number"_s},
        {u"list"_s, folder}, {u"playlist"_s, folder}, {u"renamedir"_s, u"--dry-run"_s, folder}};
    QStringList chosen = commands.at(command % commands.size());
    if (!chosen.contains(folder)) {
        chosen.append(u"--"_s);
        for (const auto &entry : fs::directory_iterator(music))
            chosen.append(QFile::decodeName(entry.path().string().c_str()));
    }
    return chosen;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QTemporaryDir scratch;
    const fs::path root = QDir(scratch.path()).canonicalPath().toStdU16String();
    const fs::path music = root / "music";
    const fs::path target = root / "target";
    const fs::path outside = root / "outside";
    fs::create_directories(outside / "private");
    write(outside / "run.sh", Text, fs::perms(0755));
    write(outside / "cover.png", Picture);
    write(outside / "empty", {});
    write(outside / "private" / "key", "secret", fs::perms(0400));
    Input input({reinterpret_cast<const char *>(data), size});
    Input head({reinterpret_cast<const char *>(data), std::min<size_t>(size, 2)});
    input.byte();
    input.byte();
    for (const fs::path &folder : {music, target}) {
        fs::create_directory(folder);
        for (int left = folder == music ? 24 : 6; left > 0 && !input.isEmpty(); --left)
            addEntry(folder, input);
    }
    const Snapshot outsideBefore = snapshotOf(outside);
    const Snapshot musicBefore = snapshotOf(music);
    const auto drop = [](QByteArrayView) -> ravlin::Result<bool> { return true; };
    ravlin::cli::Console console(ravlin::cli::Output(drop, false), ravlin::cli::Output(drop, false));
    ravlin::cli::run(words(music, target, head), console);
    const Snapshot outsideAfter = snapshotOf(outside);
    expectKept(outsideBefore, outsideAfter, [](const std::string &) { return false; });
    require(outsideBefore.size() == outsideAfter.size(), "something new outside");
    expectKept(musicBefore, snapshotOf(music), &mayChange);
    return 0;
}
