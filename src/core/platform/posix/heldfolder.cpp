// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/heldfolder.h"

#include "core/platform/posix/exclusiverename.h"
#include "core/platform/posix/file.h"
#include "core/platform/posix/metadata.h"
#include "core/platform/posix/systemerror.h"

#include <QList>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <tuple>

namespace ravlin::platform {
namespace {

/// Closes a descriptor when it goes, and keeps errno.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number < 0)
            return;
        const int kept = errno;
        ::close(m_number);
        errno = kept;
    }
    Descriptor(Descriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    bool isOpen() const { return m_number >= 0; }
    int get() const { return m_number; }

private:
    int m_number;
};

constexpr int FolderFlags = O_DIRECTORY | O_CLOEXEC;

/// Opens for listing or, where that is not permitted, just for going through.
template <typename Open>
Descriptor openFolderBy(Open open)
{
    Descriptor opened(uninterrupted([&] { return open(O_RDONLY | FolderFlags); }));
    if (opened.isOpen() || errno != EACCES)
        return opened;
    return Descriptor(uninterrupted([&] { return open(O_PATH | FolderFlags); }));
}

struct Link
{
    QByteArray text; ///< where it leads
    uid_t owner = 0;
    gid_t group = 0;
    timespec modified = {};
};

class PosixHeldFolder final : public HeldFolder
{
public:
    PosixHeldFolder(Descriptor descriptor, QString path) : m_descriptor(std::move(descriptor)), m_path(std::move(path))
    {
    }

    QString path() const override { return m_path; }
    Result<FileInfo> info() override;
    Result<Node> node(const QString &name) override;
    Result<std::vector<QString>> names() override;
    Result<std::unique_ptr<File>> openFile(const QString &name, OpenMode mode) override;
    Result<std::unique_ptr<File>> createNew(const QString &name) override;
    Result<std::shared_ptr<HeldFolder>> openFolder(const QString &name) override;
    Result<std::shared_ptr<HeldFolder>> createFolder(const QString &name) override;
    Result<void> copyLink(HeldFolder &source, const QString &name, const QString &newName) override;
    Result<void> replace(const QString &name, HeldFolder &to, const QString &newName) override;
    Result<void> renameNew(const QString &name, HeldFolder &to, const QString &newName) override;
    Result<void> remove(const QString &name) override;
    Result<void> removeFolder(const QString &name) override;
    Result<void> takeAttributes(HeldFolder &source) override;
    Result<void> sync() override;
    Result<bool> tryLock() override;

    /// Nothing for what is no link.
    Result<std::optional<Link>> link(const QString &name) const;
    int descriptor() const { return m_descriptor.get(); }

private:
    QString pathOf(const QString &name) const { return inFolder(m_path, name); }
    /// Runs a system call on a name and turns its failure into an error value.
    template <typename Call>
    Result<void> callOnName(const QString &name, const char *callName, Call call) const;
    template <typename Call>
    Result<void> callOnNames(const QString &name, HeldFolder &to, const QString &newName, Call call) const;

    Descriptor m_descriptor;
    QString m_path;
};

tl::unexpected<Error> notAName(const QString &path)
{
    return tl::unexpected(Error{ErrorCode::InvalidArgument, path, QStringLiteral("not a name in a folder")});
}

template <typename Call>
Result<void> PosixHeldFolder::callOnName(const QString &name, const char *callName, Call call) const
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    const NativePath native(name);
    if (uninterrupted([&] { return call(native.bytes()); }) != 0)
        return systemError(errno, pathOf(name), callName);
    return {};
}

/// Like callOnName, for a call that returns an errno value.
template <typename Call>
Result<void> PosixHeldFolder::callOnNames(const QString &name, HeldFolder &to, const QString &newName, Call call) const
{
    const auto *const target = dynamic_cast<PosixHeldFolder *>(&to);
    if (target == nullptr || !isPlainName(name) || !isPlainName(newName))
        return notAName(target != nullptr && isPlainName(name) ? target->pathOf(newName) : pathOf(name));
    const NativePath from(name);
    const NativePath into(newName);
    const int number = call(NameAt{descriptor(), from.bytes()}, NameAt{target->descriptor(), into.bytes()});
    if (number == 0)
        return {};
    return systemError(number, number == EEXIST ? target->pathOf(newName) : pathOf(name), "rename");
}

Result<FileInfo> PosixHeldFolder::info()
{
    struct stat status = {};
    if (::fstat(descriptor(), &status) != 0)
        return systemError(errno, m_path, "fstat");
    return fileInfo(status);
}

Result<Node> PosixHeldFolder::node(const QString &name)
{
    struct stat status = {};
    return callOnName(name, "fstatat", [&](const char *native) {
        return ::fstatat(descriptor(), native, &status, AT_SYMLINK_NOFOLLOW);
    }).map([&] {
        return Node{kindOfMode(status.st_mode), fileInfo(status)};
    });
}

Result<std::vector<QString>> PosixHeldFolder::names()
{
    // Opened anew: a copy of the descriptor would share the place up to which it was read.
    const int listed = uninterrupted([&] { return ::openat(descriptor(), ".", O_RDONLY | FolderFlags); });
    if (listed < 0)
        return systemError(errno, m_path, "openat");
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(::fdopendir(listed), &::closedir);
    if (!stream) {
        const int number = errno;
        ::close(listed);
        return systemError(number, m_path, "fdopendir");
    }
    std::vector<QString> names;
    while (true) {
        errno = 0;
        const dirent *const entry = ::readdir(stream.get()); // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (entry == nullptr)
            break;
        const char *const name = entry->d_name;
        if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
            names.push_back(decodePath(name, static_cast<qsizetype>(std::strlen(name))));
    }
    if (errno != 0)
        return systemError(errno, m_path, "readdir");
    return names;
}

Result<std::unique_ptr<File>> PosixHeldFolder::openFile(const QString &name, OpenMode mode)
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    const int access = mode == OpenMode::Read ? O_RDONLY : O_RDWR;
    return openPlainFile(descriptor(), NativePath(name).bytes(), access | O_NOFOLLOW, pathOf(name));
}

Result<std::unique_ptr<File>> PosixHeldFolder::createNew(const QString &name)
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    constexpr int Flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW;
    return openPlainFile(descriptor(), NativePath(name).bytes(), Flags, pathOf(name));
}

Result<std::shared_ptr<HeldFolder>> PosixHeldFolder::openFolder(const QString &name)
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    const NativePath native(name);
    Descriptor opened =
        openFolderBy([&](int flags) { return ::openat(descriptor(), native.bytes(), flags | O_NOFOLLOW); });
    if (opened.isOpen())
        return std::make_shared<PosixHeldFolder>(std::move(opened), pathOf(name));
    if (errno == ENOTDIR || errno == ELOOP)
        return tl::unexpected(Error{ErrorCode::NotAFile, pathOf(name), QStringLiteral("not a folder")});
    return systemError(errno, pathOf(name), "openat");
}

Result<std::shared_ptr<HeldFolder>> PosixHeldFolder::createFolder(const QString &name)
{
    constexpr mode_t OwnerOnly = 0700;
    const auto made =
        callOnName(name, "mkdirat", [&](const char *native) { return ::mkdirat(descriptor(), native, OwnerOnly); });
    if (!made)
        return tl::unexpected(made.error());
    auto opened = openFolder(name);
    if (!opened && opened.error().code != ErrorCode::NotAFile && opened.error().code != ErrorCode::NotFound)
        return opened;
    const auto present = opened ? (*opened)->names() : Result<std::vector<QString>>();
    const bool isNew =
        opened && present && present->empty() && mayBeOwnFolder(static_cast<PosixHeldFolder &>(**opened).descriptor());
    if (!isNew)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, pathOf(name),
            QStringLiteral("the new folder was exchanged for something else")});
    return opened;
}

Result<std::optional<Link>> PosixHeldFolder::link(const QString &name) const
{
    if (!isPlainName(name))
        return notAName(pathOf(name));
    const NativePath native(name);
    QByteArray text(PATH_MAX, Qt::Uninitialized);
    // For most names one call tells that they are none.
    if (::readlinkat(descriptor(), native.bytes(), text.data(), 1) < 0 && errno == EINVAL)
        return std::nullopt;
    const Descriptor opened(
        uninterrupted([&] { return ::openat(descriptor(), native.bytes(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    struct stat status = {};
    if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0)
        return systemError(errno, pathOf(name), "openat");
    if (!S_ISLNK(status.st_mode))
        return std::nullopt;
    const ssize_t size = ::readlinkat(opened.get(), "", text.data(), static_cast<size_t>(text.size()));
    if (size < 0)
        return systemError(errno, pathOf(name), "readlinkat");
    text.truncate(size);
    return Link{text, status.st_uid, status.st_gid, status.st_mtim};
}

Result<void> PosixHeldFolder::copyLink(HeldFolder &source, const QString &name, const QString &newName)
{
    const auto *const from = dynamic_cast<PosixHeldFolder *>(&source);
    if (from == nullptr)
        return notAName(pathOf(name));
    const auto link = from->link(name);
    if (!link)
        return tl::unexpected(link.error());
    if (!*link)
        return tl::unexpected(Error{ErrorCode::NotAFile, from->pathOf(name), QStringLiteral("not a link")});
    const auto made = callOnName(newName, "symlinkat",
        [&](const char *native) { return ::symlinkat((*link)->text.constData(), descriptor(), native); });
    if (!made)
        return made;
    // Best effort, and by handle: by now somebody may have put something else there.
    const Descriptor opened(::openat(descriptor(), NativePath(newName).bytes(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0 || !S_ISLNK(status.st_mode))
        return {};
    std::ignore = ::fchownat(opened.get(), "", static_cast<uid_t>(-1), (*link)->group, AT_EMPTY_PATH);
    std::ignore = ::fchownat(opened.get(), "", (*link)->owner, static_cast<gid_t>(-1), AT_EMPTY_PATH);
    const timespec times[2] = {{0, UTIME_OMIT}, (*link)->modified};
    std::ignore = ::utimensat(opened.get(), "", times, AT_EMPTY_PATH);
    return {};
}

Result<void> PosixHeldFolder::replace(const QString &name, HeldFolder &to, const QString &newName)
{
    return callOnNames(name, to, newName, [](NameAt from, NameAt into) {
        const auto rename = [&] { return ::renameat(from.folder, from.name, into.folder, into.name); };
        return uninterrupted(rename) == 0 ? 0 : errno;
    });
}

Result<void> PosixHeldFolder::renameNew(const QString &name, HeldFolder &to, const QString &newName)
{
    return callOnNames(name, to, newName, renameExclusively);
}

Result<void> PosixHeldFolder::remove(const QString &name)
{
    return callOnName(name, "unlinkat", [&](const char *native) { return ::unlinkat(descriptor(), native, 0); });
}

Result<void> PosixHeldFolder::removeFolder(const QString &name)
{
    return callOnName(
        name, "unlinkat", [&](const char *native) { return ::unlinkat(descriptor(), native, AT_REMOVEDIR); });
}

Result<void> PosixHeldFolder::takeAttributes(HeldFolder &source)
{
    const auto *const from = dynamic_cast<PosixHeldFolder *>(&source);
    if (from == nullptr)
        return notAName(m_path);
    for (const auto copy : {copyOwner, copyAttributes, copyPermissions, copyTimes}) {
        auto copied = copy(from->descriptor(), descriptor(), m_path);
        if (!copied && (copied.error().code == ErrorCode::NoSpace || copied.error().code == ErrorCode::Io))
            return copied;
    }
    return {};
}

Result<void> PosixHeldFolder::sync()
{
    if (uninterrupted([&] { return ::fsync(descriptor()); }) == 0 || errno == EINVAL)
        return {}; // EINVAL: a file system that needs no such call, for example one over the network
    return systemError(errno == EBADF ? EACCES : errno, m_path, "fsync"); // EBADF: open for going through only
}

Result<bool> PosixHeldFolder::tryLock()
{
    if (uninterrupted([&] { return ::flock(descriptor(), LOCK_EX | LOCK_NB); }) == 0)
        return true;
    if (errno == EWOULDBLOCK)
        return false;
    return systemError(errno == EBADF ? EACCES : errno, m_path, "flock"); // EBADF: open for going through only
}

/// Opens a folder by a path in which nothing is a link; ELOOP if something is.
Descriptor openWithoutLinks(const char *path)
{
    Descriptor opened = openFolderBy([&](int flags) {
        open_how how = {};
        how.flags = static_cast<quint64>(flags);
        how.resolve = RESOLVE_NO_SYMLINKS;
        return static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how));
    });
    // A kernel before 5.6, or a sandbox that does not know the call.
    if (!opened.isOpen() && (errno == ENOSYS || errno == EPERM))
        return openFolderBy([&](int flags) { return openStepByStep(path, flags); });
    return opened;
}

Result<std::shared_ptr<PosixHeldFolder>> holdFolder(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, "openat2");
    Descriptor opened = openWithoutLinks(native.bytes());
    if (opened.isOpen())
        return std::make_shared<PosixHeldFolder>(std::move(opened), path);
    if (errno == ELOOP) {
        const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(native.bytes(), nullptr), &std::free);
        if (!resolved)
            return systemError(errno, path, "realpath");
        opened = openWithoutLinks(resolved.get());
        if (opened.isOpen())
            return std::make_shared<PosixHeldFolder>(std::move(opened), decodePath(QByteArray(resolved.get())));
        if (errno == ELOOP)
            return tl::unexpected(Error{
                ErrorCode::ChangedMeanwhile, path, QStringLiteral("a folder of the path was exchanged for a link")});
    }
    if (errno == ENOTDIR)
        return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a folder")});
    return systemError(errno, path, "openat2");
}

} // namespace

int openStepByStep(const char *path, int flags)
{
    constexpr int Passing = O_PATH | O_NOFOLLOW | FolderFlags;
    Descriptor folder(::open(*path == '/' ? "/" : ".", Passing));
    for (const QByteArray &name : QByteArray(path).split('/')) {
        if (!folder.isOpen())
            return -1;
        if (name.isEmpty() || name == ".")
            continue;
        Descriptor next(uninterrupted([&] { return ::openat(folder.get(), name.constData(), Passing); }));
        struct stat status = {};
        const bool mayBeLink = !next.isOpen() && errno == ENOTDIR;
        if (mayBeLink && ::fstatat(folder.get(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0)
            errno = S_ISLNK(status.st_mode) ? ELOOP : ENOTDIR;
        folder = std::move(next);
    }
    return folder.isOpen() ? uninterrupted([&] { return ::openat(folder.get(), ".", flags); }) : -1;
}

Result<std::shared_ptr<HeldFolder>> openHeldFolder(const QString &path)
{
    return holdFolder(path);
}

Result<Place> followLinks(const QString &path)
{
    constexpr int MostLinks = 40; // as many as the system follows
    QString current = path;
    for (int followed = 0; followed <= MostLinks; ++followed) {
        const QString name = nameOf(current);
        if (!isPlainName(name))
            return tl::unexpected(Error{ErrorCode::NotAFile, path, QStringLiteral("not a plain file")});
        const auto folder = holdFolder(folderOf(current));
        if (!folder)
            return tl::unexpected(folder.error());
        const auto link = (*folder)->link(name);
        if (!link)
            return tl::unexpected(link.error());
        if (!*link)
            return Place{*folder, name};
        const quint32 owner = (*link)->owner;
        if (owner != ::geteuid() && owner != 0)
            return tl::unexpected(
                Error{ErrorCode::AccessDenied, path, QStringLiteral("a link that belongs to another user")});
        const QString text = decodePath((*link)->text);
        current = text.startsWith(Separator) ? text : inFolder((*folder)->path(), text);
    }
    return systemError(ELOOP, path, "readlinkat");
}

} // namespace ravlin::platform
