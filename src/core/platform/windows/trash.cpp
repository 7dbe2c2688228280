// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/trash.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/windows/native.h"

#include <shellapi.h>
#include <sherrors.h>
#include <shlobj.h>

namespace ravlin::platform {
namespace {

/// The shell's objects need this on every thread that uses them.
class ComSession
{
public:
    ComSession() : m_outcome(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ~ComSession()
    {
        if (SUCCEEDED(m_outcome))
            ::CoUninitialize();
    }
    ComSession(const ComSession &) = delete;
    ComSession &operator=(const ComSession &) = delete;

private:
    const HRESULT m_outcome;
};

/// A reference to one of the shell's objects.
template <typename Object>
class ComPointer
{
public:
    ComPointer() = default;
    ~ComPointer()
    {
        if (m_object)
            m_object->Release();
    }
    ComPointer(const ComPointer &) = delete;
    ComPointer &operator=(const ComPointer &) = delete;

    Object *operator->() const { return m_object; }
    Object *get() const { return m_object; }
    void **place() { return reinterpret_cast<void **>(&m_object); }

private:
    Object *m_object = nullptr;
};

// The shell's interfaces are never deleted through their base.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Learns where in the recycle bin a file ends up, and keeps the shell from deleting for good what does not fit into
/// it. Lives on the stack during the operation.
// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): see above.
class DeletionWatch final : public IFileOperationProgressSink
{
public:
    const QString &place() const { return m_place; }
    bool isRefused() const { return m_isRefused; }
    HRESULT outcome() const { return m_outcome; }

    HRESULT STDMETHODCALLTYPE PreDeleteItem(DWORD flags, IShellItem *) override
    {
        if ((flags & TSF_DELETE_RECYCLE_IF_POSSIBLE) != 0)
            return S_OK;
        m_isRefused = true;
        return E_ABORT;
    }
    HRESULT STDMETHODCALLTYPE PostDeleteItem(DWORD, IShellItem *, HRESULT outcome, IShellItem *inBin) override
    {
        m_outcome = outcome;
        wchar_t *path = nullptr;
        if (inBin && SUCCEEDED(inBin->GetDisplayName(SIGDN_FILESYSPATH, &path))) {
            m_place = fromWide(path);
            ::CoTaskMemFree(path);
        }
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void **object) override
    {
        const bool isKnown = IsEqualIID(id, __uuidof(IUnknown)) || IsEqualIID(id, __uuidof(IFileOperationProgressSink));
        *object = isKnown ? this : nullptr;
        return isKnown ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    // The other notifications do not matter.
    HRESULT STDMETHODCALLTYPE StartOperations() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FinishOperations(HRESULT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PreRenameItem(DWORD, IShellItem *, LPCWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostRenameItem(DWORD, IShellItem *, LPCWSTR, HRESULT, IShellItem *) override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE PreMoveItem(DWORD, IShellItem *, IShellItem *, LPCWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostMoveItem(DWORD, IShellItem *, IShellItem *, LPCWSTR, HRESULT, IShellItem *) override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE PreCopyItem(DWORD, IShellItem *, IShellItem *, LPCWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostCopyItem(DWORD, IShellItem *, IShellItem *, LPCWSTR, HRESULT, IShellItem *) override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE PreNewItem(DWORD, IShellItem *, LPCWSTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostNewItem(DWORD, IShellItem *, LPCWSTR, LPCWSTR, DWORD, HRESULT, IShellItem *) override
    {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE UpdateProgress(UINT, UINT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ResetTimer() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PauseTimer() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ResumeTimer() override { return S_OK; }

private:
    QString m_place;
    bool m_isRefused = false;
    HRESULT m_outcome = S_OK;
};

#pragma GCC diagnostic pop

constexpr DWORD RecycleOnDelete = 0x0008'0000; ///< FOFX_RECYCLEONDELETE
constexpr DWORD AddUndoRecord = 0x2000'0000;   ///< FOFX_ADDUNDORECORD: the shell can undo it too
constexpr WORD WithoutDialogs = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;

/// Runs the shell's operation on one file or folder; watch holds the outcome.
HRESULT recycle(const std::wstring &path, DeletionWatch &watch)
{
    ComPointer<IFileOperation> operation;
    HRESULT outcome =
        ::CoCreateInstance(__uuidof(FileOperation), nullptr, CLSCTX_ALL, __uuidof(IFileOperation), operation.place());
    if (FAILED(outcome))
        return outcome;
    outcome = operation->SetOperationFlags(
        RecycleOnDelete | AddUndoRecord | FOF_ALLOWUNDO | FOF_NO_CONNECTED_ELEMENTS | WithoutDialogs);
    ComPointer<IShellItem> item;
    if (SUCCEEDED(outcome))
        outcome = ::SHCreateItemFromParsingName(path.c_str(), nullptr, __uuidof(IShellItem), item.place());
    if (SUCCEEDED(outcome))
        outcome = operation->DeleteItem(item.get(), &watch);
    if (SUCCEEDED(outcome))
        outcome = operation->PerformOperations();
    return outcome;
}

/// The shell's older operation, for shells that only pretend to know the newer one. It does not report where the file
/// ends up.
bool recycleByOlderCall(std::wstring path)
{
    path.push_back(L'\0'); // a list ends in two zeros
    SHFILEOPSTRUCTW operation{};
    operation.wFunc = FO_DELETE;
    operation.pFrom = path.c_str();
    operation.fFlags = FOF_ALLOWUNDO | FOF_WANTNUKEWARNING | WithoutDialogs;
    return ::SHFileOperationW(&operation) == 0 && operation.fAnyOperationsAborted == FALSE;
}

/// The root of the drive (or network share) that holds a path.
QString driveOf(const QString &path)
{
    const NativePath native(path);
    std::wstring root(native.isValid() ? std::wcslen(native.text()) + 2 : 0, L'\0');
    if (!native.isValid() || !::GetVolumePathNameW(native.text(), root.data(), static_cast<DWORD>(root.size())))
        return {};
    return withoutPrefix(fromWide(root.c_str()));
}

/// Whether a path means the same file to the shell as to us. The shell, which does not take the prefix, strips blanks
/// and full stops from the end of a name, where another file may have the remaining name, and finds nothing by a long
/// path.
bool isForShell(const QString &path)
{
    const std::wstring text = path.toStdWString();
    std::wstring understood(MAX_PATH, L'\0');
    const DWORD length = ::GetFullPathNameW(text.c_str(), MAX_PATH, understood.data(), nullptr);
    const QString ended = withEndSeparator(path);
    return length > 0 && length < MAX_PATH &&
           QStringView(path).compare(fromWide(understood.c_str()), Qt::CaseInsensitive) == 0 &&
           !ended.contains(QStringLiteral(R"( \)")) && !ended.contains(QStringLiteral(R"(.\)"));
}

ErrorCode codeFor(HRESULT outcome)
{
    switch (outcome) {
    case HRESULT_FROM_WIN32(ERROR_DISK_FULL):
    case HRESULT_FROM_WIN32(ERROR_HANDLE_DISK_FULL):
    case COPYENGINE_E_DISK_FULL:
    case COPYENGINE_E_DISK_FULL_CLEAN:
        return ErrorCode::NoSpace;
    case COPYENGINE_E_RECYCLE_UNKNOWN_ERROR:
    case COPYENGINE_E_RECYCLE_FORCE_NUKE:
    case COPYENGINE_E_RECYCLE_SIZE_TOO_BIG:
    case COPYENGINE_E_RECYCLE_PATH_TOO_LONG:
    case COPYENGINE_E_RECYCLE_BIN_NOT_FOUND:
        return ErrorCode::NoTrash;
    case HRESULT_FROM_WIN32(ERROR_WRITE_PROTECT):
        return ErrorCode::ReadOnlyDrive;
    case HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND):
    case HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND):
        return ErrorCode::NotFound;
    default:
        return ErrorCode::AccessDenied;
    }
}

} // namespace

bool hasTrash(const QString &path)
{
    const QString drive = driveOf(path);
    return !drive.isEmpty() && ::GetDriveTypeW(drive.toStdWString().c_str()) == DRIVE_FIXED;
}

Result<TrashedItem> moveToTrash(const QString &path)
{
    if (const auto node = nodeAt(path); !node)
        return tl::unexpected(node.error());
    if (!isPlainName(nameOf(path)))
        return tl::unexpected(Error{ErrorCode::NoOwnName, path, {}});
    if (isOnReadOnlyDrive(path))
        return tl::unexpected(Error{ErrorCode::ReadOnlyDrive, path, {}});
    if (!hasTrash(path))
        return tl::unexpected(Error{ErrorCode::NoTrash, path, QStringLiteral("no recycle bin on this drive")});

    const ComSession session;
    // The shell takes neither a path with the prefix nor a relative one.
    const QString original = withoutPrefix(fromWide(NativePath(path).text()));
    if (!isForShell(original))
        return tl::unexpected(Error{ErrorCode::NoTrash, path, QStringLiteral("the shell takes no such path")});
    const std::wstring native = original.toStdWString();
    DeletionWatch watch;
    const HRESULT outcome = recycle(native, watch);
    if (watch.isRefused())
        return tl::unexpected(Error{ErrorCode::NoTrash, path, QStringLiteral("the recycle bin does not take it")});
    if (outcome == E_NOTIMPL && recycleByOlderCall(native) && !isTaken(path))
        return TrashedItem{original, {}, {}};
    if (FAILED(outcome) || FAILED(watch.outcome()) || isTaken(path)) {
        const HRESULT failed = FAILED(outcome) ? outcome : watch.outcome();
        constexpr int Hex = 16;
        return tl::unexpected(Error{codeFor(failed), path,
            QStringLiteral("the shell's operation failed (0x%1)").arg(static_cast<quint32>(failed), 0, Hex)});
    }
    // Beside the file, whose name begins with "$R", a file of that name with "$I" records where it was.
    QString info;
    if (nameOf(watch.place()).startsWith(QStringLiteral("$R")))
        info = inFolder(folderOf(watch.place()), QStringLiteral("$I") + nameOf(watch.place()).mid(2));
    return TrashedItem{original, watch.place(), info};
}

/// The shell takes only the path, so the folder can but be looked at right before.
Result<TrashedItem> moveToTrash(const Place &place)
{
    const auto held = place.folder->info();
    const auto found = nodeAt(place.folder->path());
    if (!held || !found)
        return tl::unexpected(held ? found.error() : held.error());
    if (!found->isSameAs(*held))
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, place.path(), QStringLiteral("another folder has taken its folder's place")});
    return moveToTrash(place.path());
}

Result<void> restoreFromTrash(const TrashedItem &item)
{
    if (item.file.isEmpty())
        return tl::unexpected(
            Error{ErrorCode::Unsupported, item.original, QStringLiteral("only the shell knows where it is")});
    FileSystem &system = FileSystem::native();
    auto restored = system.renameNew(item.file, item.original);
    if (!restored || item.info.isEmpty())
        return restored;
    if (const auto info = placeAt(system, item.info))
        static_cast<void>(info->folder->remove(info->name)); // the shell removes one that stays
    return restored;
}

} // namespace ravlin::platform
