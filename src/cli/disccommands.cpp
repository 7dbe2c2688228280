// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "cli/tagsaving.h"
#include "core/app/idiomas.h"
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/online/cddb/discapply.h"
#include "core/online/cddb/ufreedb.h"
#include "core/tags/mpeg/xanalyze.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// Files that stand for the tracks of a disc, in order.
struct DiscFiles
{
    QString offsets;               ///< offset text
    QString offsetsWithUsualDelay; ///< second one to try; may be empty
    DiscContents contents;         ///< of offsets
};

/// Analyses the files. Returns nothing, with a message, if one cannot be analysed or they do not make a disc.
std::optional<DiscFiles> analyseDisc(const QStringList &paths, Console &console)
{
    XAnalyzer analyzer(platform::FileSystem::native());
    clsXAnalyzer properties;
    std::vector<PlayedAudio> files;
    bool areAllSound = true;
    for (const QString &path : paths) {
        const XAnalyzer::Outcome outcome = analyzer.analyse(path);
        properties.take(outcome.code, outcome.record(), path);
        if (!properties.errorText().isEmpty()) {
            console.fail(path, properties.errorText().section(u"\r\n"_s, 0, 0));
            areAllSound = false;
        }
        files.push_back(PlayedAudio::of(outcome.stream));
    }
    if (!areAllSound)
        return {};
    DiscFiles disc{offsetText(files), offsetTextWithUsualDelay(files), {}};
    Result<DiscContents> contents = DiscContents::parse(disc.offsets);
    if (!contents) {
        console.fail(paths.front(), u"these files make no disc: "_s + contents.error().detail);
        return {};
    }
    disc.contents = *std::move(contents);
    return disc;
}

int runToc(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Blocks);
    RecordWriter writer(
        console.out(), format, {u"discId", u"tracks", u"seconds", u"offsets", u"offsetsWithUsualDelay"});
    if (const std::optional<DiscFiles> disc = analyseDisc(arguments.paths(), console)) {
        const DiscContents &contents = disc->contents;
        writer.write({contents.discIdText(), qint64(contents.trackCount()), qint64(contents.totalSeconds()),
            disc->offsets, disc->offsetsWithUsualDelay});
    }
    writer.finish();
    return console.status();
}

/// uFREEDB for a program without an event loop: each operation returns when it has ended. Makes the QCoreApplication,
/// so only one may exist.
class CddbDialogue
{
    Q_DISABLE_COPY_MOVE(CddbDialogue)

public:
    enum class Ending
    {
        NotFound,
        ChoiceOffered,
        RecordRead,
        Failed ///< see failure()
    };

    CddbDialogue();

    uFREEDB &freedb() { return *m_freedb; }
    /// Begins an operation of the component, which must end with a signal, and waits for its end.
    Ending wait(const std::function<void(uFREEDB &)> &begin);
    const LookupFailure &failure() const { return m_failure; }

private:
    int m_argumentCount = 1;
    char m_name[11] = "ravlin-cli";
    char *m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_application;
    std::unique_ptr<uFREEDB> m_freedb;
    LookupFailure m_failure;
};

CddbDialogue::CddbDialogue()
{
    // In the C locale, which many scripts use, Qt would complain on standard error.
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
    qInstallMessageHandler(before);
    m_freedb = std::make_unique<uFREEDB>();
}

CddbDialogue::Ending CddbDialogue::wait(const std::function<void(uFREEDB &)> &begin)
{
    QEventLoop loop;
    Ending ending = Ending::Failed;
    const auto endWith = [&loop, &ending](Ending how) {
        ending = how;
        loop.quit();
    };
    QObject::connect(m_freedb.get(), &uFREEDB::notFound, &loop, [&] { endWith(Ending::NotFound); });
    QObject::connect(m_freedb.get(), &uFREEDB::choiceOffered, &loop, [&] { endWith(Ending::ChoiceOffered); });
    QObject::connect(m_freedb.get(), &uFREEDB::recordRead, &loop, [&] { endWith(Ending::RecordRead); });
    QObject::connect(m_freedb.get(), &uFREEDB::failed, &loop, [&](const LookupFailure &failure) {
        m_failure = failure;
        endWith(Ending::Failed);
    });
    begin(*m_freedb);
    loop.exec();
    return ending;
}

constexpr Option ServerOption{u"--server", u"ADDRESS", u"ask this server: a host, HOST:PORT or a URL"};
constexpr Option SearchOption{u"--search", u"TEXT", u"look for \"ARTIST / ALBUM\", an artist or an album instead"};
constexpr Option MatchOption{u"--match", u"NUMBER", u"take this one where several discs match"};
constexpr Option TimeoutOption{
    u"--timeout", u"SECONDS", u"wait no longer for an answer of the server; 30 if not given"};
constexpr Option ApplyOption{u"--apply", {}, u"write the disc's data into the files' tags"};

using Ending = CddbDialogue::Ending;

constexpr qint64 inMilliseconds(qint64 frames)
{
    return frames * 1000 / FramesPerSecond;
}

/// Looks a disc up, prints it and applies it.
class DiscLookup
{
public:
    DiscLookup(const Arguments &arguments, Console &console, DiscFiles files)
        : m_arguments(arguments), m_console(console), m_files(std::move(files)), m_subject(arguments.paths().front())
    {
        m_english.fill();
    }

    /// Returns whether a disc was found.
    bool find(const QString &server, const QString &mail)
    {
        uFREEDB &freedb = m_dialogue.freedb();
        m_server = server;
        freedb.setTimeLimit(m_arguments.value(TimeoutOption.name).value_or(u"0"_s).toInt());
        freedb.setServer(server);
        freedb.setMail(mail);
        freedb.setClientName(u"ravlin"_s);
        freedb.setClientVersion(QString::fromLatin1(RAVLIN_VERSION).section(u'.', 0, 1));
        const std::optional<QString> text = m_arguments.value(SearchOption.name);
        const Ending ending = m_dialogue.wait([&](uFREEDB &database) {
            if (text) {
                database.setSearchText(*text);
                database.Search();
            } else {
                database.Query(m_files.offsets, m_files.offsetsWithUsualDelay);
            }
        });
        if (freedb.contents())
            m_files.contents = *freedb.contents();
        return settle(ending);
    }

    void print(RecordWriter &writer, const Extra &entry = {})
    {
        const DiscRecord &record = m_dialogue.freedb().record();
        const auto differences = lengthDifferences(m_files.contents, record);
        const size_t rows = std::max(size_t(m_arguments.paths().size()), record.tracks.size());
        for (size_t row = 0; row < rows; ++row)
            writer.write(rowOf(record, row, differences), entry);
    }

    void apply(const SavingRules &rules, Session &session)
    {
        const DiscRecord &record = m_dialogue.freedb().record();
        const QStringList &files = m_arguments.paths();
        if (size_t(files.size()) != record.tracks.size()) {
            m_console.fail(m_subject,
                u"the disc has %1 tracks and there are %2 files; nothing is written"_s.arg(record.tracks.size())
                    .arg(files.size()));
            return;
        }
        DiscFields fields{record.artist, record.album, record.year, record.genre};
        const bool canHoldGenre = rules.onlyEdited && isStorable(&TagRecord::Genre, fields.genre);
        const QString warning = warningNotSaved(&TagRecord::Genre, fields.genre);
        if (!warning.isEmpty() && !canHoldGenre) {
            m_console.warn(warning + u"; the files keep theirs"_s);
            fields.genre.clear();
        }
        session.begin(history::Kind::Lookup);
        SavingRun run(rules, m_arguments, session.journal());
        for (qsizetype i = 0; i < files.size(); ++i) {
            const DiscTrack &track = record.tracks[size_t(i)];
            fields.artist = record.artistOf(track);
            const Result<void> saved = save(run, files[i], fields, {QString::number(i + 1), track.title});
            if (!saved)
                m_console.fail(files[i], saved.error());
        }
    }

private:
    bool settle(Ending ending)
    {
        switch (ending) {
        case Ending::RecordRead:
            return true;
        case Ending::ChoiceOffered:
            return choose();
        case Ending::NotFound:
            m_console.fail(m_subject, u"disc not found"_s);
            return false;
        case Ending::Failed:
            m_console.fail(m_server, lookupFailureText(m_english, m_dialogue.failure()));
            return false;
        }
        Q_UNREACHABLE();
        return false;
    }

    bool choose()
    {
        const int count = m_dialogue.freedb().result();
        const std::optional<QString> chosen = m_arguments.value(MatchOption.name);
        if (!chosen) {
            tellMatches();
            return false;
        }
        const int number = chosen->toInt();
        if (number < 1 || number > count) {
            m_console.fail(m_subject, u"there is no match %1, but %2 of them"_s.arg(*chosen, QString::number(count)));
            return false;
        }
        return settle(m_dialogue.wait([number](uFREEDB &database) { database.take(number - 1); }));
    }

    Result<void> save(SavingRun &run, const QString &path, const DiscFields &fields, const DiscRow &row)
    {
        run.prepareFor(path);
        const bool onlyEdited = run.store().savesOnlyEdited();
        const auto make = [&](const TagRecord &) { return discEdits(fields, row, onlyEdited); };
        const Result<TagRecord> record = run.store().save(path, make);
        if (!record)
            return tl::unexpected(record.error());
        if (!onlyEdited)
            warnOfTextsNotSaved(path, *record, m_console);
        warnOfOutlook(path, *record, run.state().tagSaveMode, m_arguments, m_console);
        return {};
    }

    /// Lists the matches; for the first few, reports how well they fit.
    void tellMatches()
    {
        const std::vector<cddb::Match> matches = m_dialogue.freedb().matches();
        QStringList list;
        for (int i = 0; i < int(matches.size()); ++i) {
            const cddb::Match &match = matches[size_t(i)];
            constexpr int MostLookedAt = 10;
            const QString fit = i < MostLookedAt ? fitOf(i) : QString();
            list << u"%1: %2 %3 %4 / %5%6"_s.arg(
                QString::number(i + 1), match.category, match.discId, match.artist, match.album, fit);
        }
        m_console.fail(m_subject, u"no disc matches for certain; choose with --match:"_s, list);
    }

    QString fitOf(int match)
    {
        if (m_dialogue.wait([match](uFREEDB &database) { database.take(match); }) != Ending::RecordRead)
            return u" ("_s + lookupFailureText(m_english, m_dialogue.failure()) + u')';
        const DiscRecord &record = m_dialogue.freedb().record();
        if (int(record.tracks.size()) != m_files.contents.trackCount())
            return u" (%1 tracks)"_s.arg(record.tracks.size());
        qint64 largest = 0;
        for (const std::optional<qint64> &difference : lengthDifferences(m_files.contents, record)) {
            if (!difference)
                return {};
            largest = std::max(largest, std::abs(*difference));
        }
        return u" (lengths differ by up to %1 s)"_s.arg(double(largest) / FramesPerSecond, 0, 'f', 1);
    }

    Record rowOf(const DiscRecord &record, size_t row, const std::vector<std::optional<qint64>> &differences) const
    {
        const QStringList &files = m_arguments.paths();
        Record values(8);
        if (row < size_t(files.size()))
            values[0] = files[qsizetype(row)];
        if (row >= record.tracks.size())
            return values;
        const DiscTrack &track = record.tracks[row];
        values[1] = qint64(row + 1);
        values[2] = track.title;
        values[3] = record.artistOf(track);
        values[4] = record.album;
        values[5] = record.year;
        values[6] = record.genre;
        if (row < differences.size() && differences[row])
            values[7] = inMilliseconds(*differences[row]);
        return values;
    }

    const Arguments &m_arguments;
    Console &m_console;
    DiscFiles m_files;
    const QString m_subject; ///< the file named in messages about the disc
    QString m_server;
    Captions m_english;
    CddbDialogue m_dialogue;
};

/// Why the options are wrong; empty if they are not.
QString usageProblem(const Arguments &arguments)
{
    const std::optional<QString> text = arguments.value(SearchOption.name);
    if (text && cddb::SearchWords::of(*text).isEmpty())
        return u"--search needs a text"_s;
    for (const Option &option : {MatchOption, TimeoutOption}) {
        const std::optional<QString> number = arguments.value(option.name);
        if (number && number->toInt() < 1)
            return u"%1 is a number from 1 on, not '%2'"_s.arg(option.name, *number);
    }
    return {};
}

void lookUp(const Arguments &arguments, const SavingRules &rules, Session &session, RecordWriter &writer)
{
    Console &console = session.console();
    const Settings settings;
    std::optional<DiscFiles> files = analyseDisc(arguments.paths(), console);
    if (!files)
        return;
    DiscLookup lookup(arguments, console, *std::move(files));
    const QString server = arguments.value(ServerOption.name).value_or(cdServer(settings));
    if (!lookup.find(server, cdMail(settings)))
        return;
    // The records of a program tell the entry, too.
    const bool isFirst = arguments.has(JsonOption.name) && arguments.has(ApplyOption.name);
    if (!isFirst)
        lookup.print(writer);
    if (arguments.has(ApplyOption.name))
        lookup.apply(rules, session);
    if (isFirst)
        lookup.print(writer, session.finish());
}

int runLookup(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    if (const QString problem = usageProblem(arguments); !problem.isEmpty())
        return console.refuse(u"lookup"_s, problem);
    const RulesOrStatus rules = rulesFor(u"lookup"_s, arguments, console);
    if (!rules)
        return rules.error();
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table);
    RecordWriter writer(
        console.out(), format, {u"file", u"track", u"title", u"artist", u"album", u"year", u"genre", u"differenceMs"});
    lookUp(arguments, *rules, session, writer);
    writer.finish();
    return console.status();
}

} // namespace

Command tocCommand()
{
    return {u"toc", u"tell the table of contents of the CD that files come from",
        u"Takes the files, in the order given, for the tracks of a CD and tells its identifier, the number of tracks,\n"
        "its seconds and the frames (1/75 s) where each track begins and the last one ends. Where files don't tell\n"
        "what their encoder added, the frames with its usual amount taken off are told, too. Nothing is sent.",
        u"FILE", true, {JsonOption}, runToc};
}

Command lookupCommand()
{
    return {u"lookup", u"look the album of files up in a CD database",
        u"Takes the files, in the order given, for the tracks of a CD and asks a CD database for it: their lengths,\n"
        "and the e-mail address of the options, are sent to the server. Prints what is found beside each file, with\n"
        "how much longer the file is than the track. Where several discs match, or none exactly, they are listed\n"
        "and --match takes one. Nothing is written without --apply, and only if there are as many tracks as files.",
        u"FILE", true,
        {ServerOption, SearchOption, MatchOption, TimeoutOption, ApplyOption, ModeOption, OnlyEditedOption,
            AllFieldsOption, ForceOption, NoHistoryOption, JsonOption},
        runLookup};
}

} // namespace ravlin::cli
