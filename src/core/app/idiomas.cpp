// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/idiomas.h"

#include "core/app/settings.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

struct Language
{
    QStringView name;
    QStringView code;
    QStringView LanguageTexts::*column = nullptr;
};

constexpr std::array<Language, 3> Languages{{
    {u"spanish", u"es", &LanguageTexts::spanish},
    {u"english", u"en", &LanguageTexts::english},
    {u"french", u"fr", &LanguageTexts::french},
}};

// From the program's folder: where programs stand alone (Windows), and where all programs stand together.
constexpr QStringView GuideFolders[] = {u"guide", u"../share/doc/ravlin/guide"};

} // namespace

QString languageNameFromCode(QStringView code)
{
    const auto found = std::ranges::find(Languages, code, &Language::code);
    return found == Languages.end() ? QString() : found->name.toString();
}

QString languageCodeFromName(QStringView name)
{
    const auto found = std::ranges::find(Languages, name, &Language::name);
    return found == Languages.end() ? QString() : found->code.toString();
}

QString guidePage(const QString &programFolder, QStringView languageName)
{
    for (const QString &code : {languageCodeFromName(languageName), u"en"_s}) {
        if (code.isEmpty())
            continue;
        for (const QStringView folder : GuideFolders) {
            const QString page = QDir::cleanPath(u"%1/%2/%3/index.html"_s.arg(programFolder, folder, code));
            if (QFileInfo(page).isFile())
                return page;
        }
    }
    return {};
}

Captions::Column Captions::columnOf(QStringView languageName)
{
    const auto found = std::ranges::find(Languages, languageName, &Language::name);
    return found == Languages.end() ? nullptr : found->column;
}

void Captions::fill()
{
    const Column column = columnOf(m_languageName);
    if (column == nullptr)
        return;
    m_column = column;
    std::ranges::transform(
        CaptionTable, m_captions.begin(), [column](const LanguageTexts &texts) { return (texts.*column).toString(); });
}

void Captions::chooseAtStart(const Settings &settings)
{
    const QString stored = languageNameFromCode(settings.read(settingskey::Idioma));
    m_languageName = stored.isEmpty() ? u"english"_s : stored;
    fill();
}

QLocale Captions::locale() const
{
    const QLocale ofSystem;
    const QLocale ofLanguage(languageCodeFromName(m_languageName));
    return ofSystem.language() == ofLanguage.language() ? ofSystem : ofLanguage;
}

QString Captions::text(Caption caption) const
{
    const int number = static_cast<int>(caption);
    return number >= 1 && number <= CaptionCount ? m_captions[size_t(number) - 1] : QString();
}

QString Captions::text(Text text) const
{
    return (languageTexts(text).*m_column).toString();
}

QString Captions::mark(QChar mark) const
{
    const bool isFrench = m_column == &LanguageTexts::french;
    return isFrench ? QStringLiteral("\u00a0") + mark : QString(mark);
}

// NOLINTNEXTLINE(readability-function-size): the compiler warns of a code that has no case
QString Captions::errorText(ErrorCode code) const
{
    switch (code) {
    case ErrorCode::NotFound:
        return text(Text::ErrorNotFound);
    case ErrorCode::AlreadyExists:
        return text(Text::ErrorAlreadyExists);
    case ErrorCode::NotAFolder:
        return text(Text::ErrorNotAFolder);
    case ErrorCode::NotAFile:
        return text(Text::ErrorNotAFile);
    case ErrorCode::AccessDenied:
        return text(Text::ErrorAccessDenied);
    case ErrorCode::ReadOnly:
        return text(Text::ErrorReadOnly);
    case ErrorCode::ReadOnlyDrive:
        return text(Text::ErrorReadOnlyDrive);
    case ErrorCode::NoSpace:
        return text(Text::ErrorNoSpace);
    case ErrorCode::LowSpace:
        return text(Caption::LowDiskSpace);
    case ErrorCode::Io:
        return text(Text::ErrorIo);
    case ErrorCode::ChangedMeanwhile:
        return text(Text::ErrorChangedMeanwhile);
    case ErrorCode::FileInUse:
        return text(Text::ErrorFileInUse);
    case ErrorCode::Interrupted:
        return text(Text::ErrorInterrupted);
    case ErrorCode::HalfWritten:
        return text(Text::ErrorHalfWritten);
    case ErrorCode::FileSizeLimit:
        return text(Text::ErrorFileSizeLimit);
    case ErrorCode::VerifyFailed:
        return text(Text::ErrorVerifyFailed);
    case ErrorCode::BrokenTag:
        return text(Text::ErrorBrokenTag);
    case ErrorCode::TooLarge:
        return text(Text::ErrorTooLarge);
    case ErrorCode::TagTooLarge:
        return text(Text::ErrorTagTooLarge);
    case ErrorCode::GenreOutOfRange:
        return text(Text::ErrorGenreOutOfRange);
    case ErrorCode::NotStorable:
        return text(Text::ErrorNotStorable);
    case ErrorCode::Damaged:
        return text(Text::ErrorDamaged);
    case ErrorCode::NewerVersion:
        return text(Text::ErrorNewerVersion);
    case ErrorCode::NoStream:
        return text(Text::ErrorNoStream);
    case ErrorCode::Settings:
        return text(Text::ErrorSettings);
    case ErrorCode::InvalidArgument:
        return text(Text::ErrorInvalidArgument);
    case ErrorCode::NameTooLong:
        return text(Text::NameTooLong);
    case ErrorCode::NoOwnName:
        return text(Text::ErrorNoOwnName);
    case ErrorCode::GivenTwice:
        return text(Text::ErrorGivenTwice);
    case ErrorCode::Unsupported:
        return text(Text::ErrorUnsupported);
    case ErrorCode::Cancelled:
        return text(Text::ErrorCancelled);
    case ErrorCode::IntoItself:
        return text(Text::ErrorIntoItself);
    case ErrorCode::NoTrash:
        return text(Text::ErrorNoTrash);
    case ErrorCode::NotMp3Name:
        return text(Text::ErrorNotMp3Name);
    case ErrorCode::NotMp3Content:
        return text(Text::ErrorNotMp3Content);
    }
    Q_UNREACHABLE();
    return {};
}

QString selectionHint(const Captions &captions, qsizetype selected, Text many)
{
    if (selected == 0)
        return captions.text(Text::HintNoFile);
    return selected > 1 ? captions.text(many).arg(selected) : QString();
}

} // namespace ravlin
