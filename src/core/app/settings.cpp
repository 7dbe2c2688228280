// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QSettings>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ravlin {

namespace {

constexpr QStringView Section = u"ini";
/// Far beyond any settings file; keeps a stray file under its name from filling the memory.
constexpr qint64 LargestFile = 1024 * 1024; // bytes
constexpr int MostDamagedCopies = 100;
constexpr std::chrono::milliseconds LockPatience = 2s;

bool hasContent(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(LargestFile + 1) == bytes;
}

} // namespace

QString Settings::defaultPath()
{
    // Only QSettings knows the place on each system. It reads the file that it is asked about, so give a name that no
    // file has.
    const QSettings place(QSettings::IniFormat, QSettings::UserScope, u"ravlin"_s, u"place-of-settings"_s);
    return QFileInfo(place.fileName()).dir().filePath(u"ravlin.ini"_s);
}

Settings::Settings(QString path) : m_path(std::move(path))
{
    // m_problem keeps an error; the settings are empty then.
    std::ignore = reload();
}

QString Settings::read(QStringView key) const
{
    const auto written = m_written.find(key.toString());
    return written != m_written.end() ? *written : m_document.value(Section, key);
}

void Settings::write(QStringView key, const QString &text)
{
    m_written.insert(key.toString(), text);
}

Error Settings::failure(const QString &detail) const
{
    return {ErrorCode::Settings, m_path, detail};
}

/// The file's bytes; empty if there is no file.
Result<QByteArray> Settings::readFile() const
{
    const QFileInfo info(m_path);
    if (!info.exists())
        return QByteArray();
    if (!info.isFile()) // reading a pipe might never return
        return tl::unexpected(failure(u"not an ordinary file"_s));
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return tl::unexpected(failure(file.errorString()));
    const QByteArray bytes = file.read(LargestFile + 1);
    if (file.error() != QFileDevice::NoError)
        return tl::unexpected(failure(file.errorString()));
    if (bytes.size() > LargestFile)
        return tl::unexpected(failure(u"too large for a settings file"_s));
    return bytes;
}

Result<void> Settings::reload()
{
    m_problem.reset();
    const Result<QByteArray> bytes = readFile();
    if (!bytes) {
        m_problem = bytes.error();
        return tl::unexpected(bytes.error());
    }
    const std::optional<IniDocument> document = IniDocument::parse(*bytes);
    if (!document) {
        m_problem = failure(u"the file is damaged: it is no text"_s);
        return tl::unexpected(*m_problem);
    }
    m_document = *document;
    return {};
}

/// Copies the damaged file to a free name, or finds the copy that an earlier run made. Returns its path.
Result<QString> Settings::keepAside(const QByteArray &bytes) const
{
    for (int number = 0; number < MostDamagedCopies; ++number) {
        const QString name = m_path + u".damaged"_s + (number == 0 ? QString() : u".%1"_s.arg(number));
        if (hasContent(name, bytes) || QFile::copy(m_path, name))
            return name;
    }
    return tl::unexpected(failure(u"the damaged file could not be kept aside"_s));
}

Result<IniDocument> Settings::documentToChange(const QByteArray &bytes)
{
    if (const std::optional<IniDocument> document = IniDocument::parse(bytes))
        return *document;
    const Result<QString> copy = keepAside(bytes);
    if (!copy)
        return tl::unexpected(copy.error());
    m_problem = failure(u"the file was damaged and is kept as %1"_s.arg(*copy));
    return m_document;
}

Result<void> Settings::replaceFile(const QByteArray &bytes) const
{
    const bool isNew = !QFileInfo::exists(m_path);
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly))
        return tl::unexpected(failure(file.errorString()));
    if (isNew) // it may hold an e-mail address
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(bytes);
    if (!file.commit())
        return tl::unexpected(failure(file.errorString()));
    return {};
}

Result<void> Settings::save()
{
    if (m_written.isEmpty())
        return {};
    if (!QDir().mkpath(QFileInfo(m_path).path()))
        return tl::unexpected(failure(u"the folder cannot be created"_s));
    QLockFile lock(m_path + u".lock"_s);
    if (!lock.tryLock(static_cast<int>(LockPatience.count())))
        return tl::unexpected(failure(u"the file cannot be locked"_s));

    const Result<QByteArray> bytes = readFile();
    if (!bytes)
        return tl::unexpected(bytes.error());
    Result<IniDocument> document = documentToChange(*bytes);
    if (!document)
        return tl::unexpected(document.error());
    for (auto it = m_written.cbegin(); it != m_written.cend(); ++it) {
        if (document->value(Section, it.key()) != it.value())
            document->setValue(Section, it.key(), it.value());
    }
    if (document->toBytes() != *bytes) {
        if (const Result<void> replaced = replaceFile(document->toBytes()); !replaced)
            return replaced;
    }
    m_document = *document;
    m_written.clear();
    return {};
}

} // namespace ravlin
