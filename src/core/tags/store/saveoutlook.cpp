// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/saveoutlook.h"

#include "core/app/idiomas.h"
#include "core/tags/id3/id3v1.h"
#include "core/tags/id3/transliterate.h"
#include "core/tags/store/tagstore.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <functional>
#include <limits>
#include <stop_token>
#include <utility>

namespace ravlin {

namespace {

constexpr int OnlyV1 = 1;
constexpr int V1WithoutV2 = 4;

/// Adds what a field of ID3v1 with that many bytes loses of a text.
void lookAt(SaveOutlook &outlook, const QString &text, qsizetype size)
{
    const QString latin = QString::fromLatin1(toLatin1Visibly(text, std::numeric_limits<qsizetype>::max()));
    const QString whole = text.normalized(QString::NormalizationForm_C);
    outlook.losesCharacters = outlook.losesCharacters || latin.trimmed() != whole.trimmed();
    outlook.cutsTexts = outlook.cutsTexts || !QStringView(latin).mid(size).trimmed().isEmpty();
}

struct RemovedText
{
    Text ofMany;
    Caption name;
};

/// In the order of TagFields.
constexpr std::array<RemovedText, TagFields.size()> RemovedTexts{
    {{Text::RemovesTitle, Caption::Title}, {Text::RemovesArtist, Caption::Artist}, {Text::RemovesAlbum, Caption::Album},
        {Text::RemovesYear, Caption::Year}, {Text::RemovesTrack, Caption::Track}, {Text::RemovesGenre, Caption::Genre},
        {Text::RemovesComment, Caption::Comment}}};

QString removedText(const Captions &captions, const SaveOutlook &outlook, bool isOneFile)
{
    QStringList removed;
    for (std::size_t i = 0; i < RemovedTexts.size(); ++i) {
        const int count = outlook.removed.at(i);
        if (count == 0)
            continue;
        const QString number = captions.locale().toString(count);
        const QString many = outlook.isCut ? captions.text(Text::NumberOrMore).arg(number) : number;
        removed << (isOneFile ? captions.text(RemovedTexts.at(i).name).remove(u'&')
                              : captions.text(RemovedTexts.at(i).ofMany).arg(many));
    }
    const Text sentence = isOneFile ? Text::RemarkFieldsRemoved : Text::HintRemoves;
    return removed.isEmpty() ? QString() : captions.text(sentence).arg(removed.join(QStringLiteral(", ")));
}

QString v1Text(const Captions &captions, const SaveOutlook &outlook)
{
    const QString v1 = QStringLiteral("ID3v1");
    if (outlook.isNotShown)
        return captions.text(Text::HintV1NotShown).arg(v1, QStringLiteral("ID3v2"));
    QStringList losses;
    if (outlook.losesCharacters)
        losses << captions.text(Text::V1LosesCharacters).arg(QStringLiteral("???"));
    if (outlook.cutsTexts)
        losses << captions.text(Text::V1CutsTexts);
    if (outlook.losesPictures)
        losses << captions.text(Text::V1LosesPictures);
    if (losses.isEmpty())
        return {};
    return captions.text(Text::HintV1Loses).arg(v1, losses.join(QStringLiteral(", ")));
}

} // namespace

SaveOutlook &SaveOutlook::operator|=(const SaveOutlook &other)
{
    isNotShown = isNotShown || other.isNotShown;
    losesCharacters = losesCharacters || other.losesCharacters;
    cutsTexts = cutsTexts || other.cutsTexts;
    losesPictures = losesPictures || other.losesPictures;
    std::ranges::transform(removed, other.removed, removed.begin(), std::plus<>());
    isCut = isCut || other.isCut;
    return *this;
}

SaveOutlook outlookOf(const TagRecord &record, int mode)
{
    SaveOutlook outlook;
    outlook.isNotShown = mode == OnlyV1 && record.HasV2;
    if (mode != V1WithoutV2)
        return outlook;
    const bool hasTrack = isWritableTrack(record.Track) && record.Track.toInt() > 0;
    for (const QString *text : {&record.Title, &record.Artist, &record.Album})
        lookAt(outlook, *text, id3::V1TextSize);
    lookAt(outlook, record.Comment, hasTrack ? id3::V1CommentBeforeTrackSize : id3::V1TextSize);
    outlook.losesPictures = record.HasPicture;
    return outlook;
}

SaveOutlook outlookOf(const PreparedSave &save, int mode, bool onlyEdited)
{
    SaveOutlook outlook = outlookOf(save.wanted, mode);
    for (std::size_t i = 0; i < TagFields.size(); ++i) {
        const TagEdits::Field field = TagFields.at(i).member;
        const QString &text = save.wanted.*field;
        const bool goes = text.isEmpty() || (!onlyEdited && !isWritable(field, text));
        outlook.removed.at(i) = goes && !(save.present.*field).isEmpty() ? 1 : 0;
    }
    return outlook;
}

QString outlookText(const Captions &captions, const SaveOutlook &outlook, bool isOneFile)
{
    QStringList texts{removedText(captions, outlook, isOneFile), v1Text(captions, outlook)};
    texts.removeAll(QString());
    return texts.join(captions.mark(u';') + u' ');
}

struct OutlookReader::Job
{
    ProgramState state;
    QStringList paths;
    Prepare prepare;
    SaveOutlook outlook; ///< the worker's until it has posted finish()
    std::stop_source stop;
};

OutlookReader::OutlookReader(platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_fileSystem(fileSystem)
{
    m_pool.setMaxThreadCount(1);
}

OutlookReader::~OutlookReader()
{
    cancel();
    waitForFile();
}

void OutlookReader::cancel()
{
    if (m_wanted)
        m_wanted->stop.request_stop();
    m_wanted.reset();
    m_pool.clear();
}

void OutlookReader::request(const ProgramState &state, const QStringList &paths, Prepare prepare)
{
    cancel();
    m_wanted = std::make_shared<Job>();
    m_wanted->state = state;
    m_wanted->paths = paths;
    m_wanted->prepare = std::move(prepare);
    m_pool.start([this, job = m_wanted] {
        const TagStore store(job->state, m_fileSystem);
        const QDeadlineTimer end(LongestTime);
        for (qsizetype i = 0; i < job->paths.size() && !job->stop.stop_requested(); ++i) {
            job->outlook.isCut = i == MostFiles || end.hasExpired();
            if (job->outlook.isCut)
                break;
            if (const Result<PreparedSave> save = job->prepare(job->paths[i], store))
                job->outlook |= outlookOf(*save, job->state.tagSaveMode, store.savesOnlyEdited());
        }
        QMetaObject::invokeMethod(
            this, [this, job] { finish(job); }, Qt::QueuedConnection);
    });
}

void OutlookReader::finish(const std::shared_ptr<Job> &job)
{
    if (job != m_wanted)
        return;
    m_wanted.reset();
    Q_EMIT ready(job->outlook);
}

} // namespace ravlin
