// SPDX-License-Identifier: GPL-3.0-or-later
// A version file may be any bytes: parsing it ends and gives at most 51 records, all with a name. The result leads to
// no file outside a folder and to no address less secure than the version file's. The same bytes serve as a checksum.
#include "core/online/update/inetretreive.h"
#include "core/online/update/sequentialtext.h"
#include "core/online/update/updateaddress.h"
#include "core/online/update/versionfile.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace ravlin;

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// Every field takes at least one byte, or is the empty one between two commas.
void checkFields(QByteArrayView bytes)
{
    SequentialReader reader(bytes);
    qsizetype count = 0;
    while (!reader.atEnd() && reader.field()) {
        ++count;
        require(count <= bytes.size());
    }
}

void checkName(const QString &name)
{
    const UpdateResult<QString> safe = safeFileName(name);
    if (!safe)
        return;
    require(*safe == name && !name.isEmpty() && name != QStringLiteral(".."));
    require(std::none_of(
        name.begin(), name.end(), [](QChar character) { return QStringView(u"/\\:").contains(character); }));
    require(!name.startsWith(u'.') && !name.contains(QChar(u'\0')));
}

void checkLocation(const VersionRecord &record, const QString &scheme)
{
    const QUrl versionFile(scheme + QStringLiteral("://up.example/ravlin/app/ravlin.ver"));
    const UpdateResult<QUrl> url = downloadUrl(versionFile, record);
    if (!url)
        return;
    require(url->isValid() && !url->host().isEmpty() && url->userInfo().isEmpty());
    require(url->scheme() == QStringLiteral("https") || url->scheme() == scheme);
    require(checksumUrl(*url).isValid());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(data, qsizetype(size));
    checkFields(bytes);
    const UpdateResult<VersionFile> file = VersionFile::parse(bytes);
    if (file) {
        require(file->version.front().isDigit() && file->records.size() <= VersionFile::MaximumRecords);
        isNewerVersion(file->version, runningVersion());
        for (const VersionRecord &record : file->records) {
            require(!record.fileName.isEmpty());
            checkName(record.fileName);
            checkLocation(record, QStringLiteral("https"));
            checkLocation(record, QStringLiteral("http"));
        }
    }
    const QString text = QString::fromUtf8(bytes);
    checkName(text);
    if (const UpdateResult<QUrl> url = versionFileUrl(text))
        require(url->isValid() && url->path().endsWith(QStringLiteral("/ravlin/app/ravlin.ver")));
    if (const auto checksum = checksumIn(bytes, QStringLiteral("a.zip")))
        require(checksum->size() == 32);
    return 0;
}
