// SPDX-License-Identifier: GPL-3.0-or-later
// Every window in every language shows only texts from the two tables in that language, except for a few that are the
// same in all languages. A window that is open at a change of the language shows the new texts when it applies its
// captions; a later one has them at once.

#include "core/app/texttable.h"
#include "core/naming/placeholders.h"
#include "core/online/cddb/ufreedb.h"
#include "core/tags/store/tageditor.h"
#include "ui/app/frmabout.h"
#include "ui/app/opciones.h"
#include "ui/app/principalfixture.h"
#include "ui/controls/clashdialog.h"
#include "ui/controls/outcomebox.h"
#include "ui/files/operationdialogs.h"
#include "ui/naming/dialog.h"
#include "ui/naming/patterneditor.h"
#include "ui/online/buscaweb.h"
#include "ui/online/freedb.h"
#include "ui/online/mainform.h"
#include "ui/online/matchdialog.h"
#include "ui/tags/fakepageowner.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QHeaderView>
#include <QMessageBox>
#include <QRegularExpression>
#include <QSet>
#include <QTabBar>
#include <QTcpServer>
#include <QTimer>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

struct WindowMaker
{
    QString name;
    std::function<QWidget *(Program &)> make;
    /// Applies the captions of a window that may be open while the language changes.
    std::function<void(QWidget *)> applyCaptions = {};
    /// Texts of this window that are the same in every language.
    QStringList fixed = {};
};

/// The reports about a connection are the same in every language.
QStringList connectionStates()
{
    QStringList texts;
    for (int number = 0; number <= int(ConnectionState::ResponseComplete); ++number)
        texts << connectionStateText(static_cast<ConnectionState>(number));
    return texts;
}

/// Every window of the program. Add a line for a new one.
QList<WindowMaker> windowMakers()
{
    return {
        {u"principal"_s, [](Program &program) { return new principal(program); },
            [](QWidget *window) { static_cast<principal *>(window)->applyCaptions(); },
            {u"ravlin!"_s, u"id3v1"_s, u"id3v2"_s}},
        {u"opciones"_s, [](Program &program) { return new opciones(program); }, {},
            {u"general"_s, u"tags"_s, u"freedb"_s, u"email"_s, u"id3v1"_s, u"id3v2"_s, u"ID3v2.3"_s, u"ID3v2.4"_s,
                u"spanish"_s, u"english"_s, u"french"_s, defaults::Server.toString(), defaults::Mail.toString()}},
        {u"Dialog"_s,
            [](Program &program) {
                static FakePageOwner owner; // outlives all windows
                return new Dialog(program.pageContext(owner), QDir::tempPath(), QString());
            }},
        {u"clash"_s,
            [](Program &program) { return new ClashDialog(program.captions, u"1.mp3"_s, u"2.mp3"_s, nullptr); }},
        {u"takenName"_s,
            [](Program &program) {
                Clash clash;
                clash.source = u"/from/1.mp3"_s;
                clash.target = u"/to/1.mp3"_s;
                clash.sourceNode.kind = platform::NodeKind::Folder;
                return new ClashDialog(program.captions, clash, nullptr);
            }},
        {u"outcome"_s,
            [](Program &program) {
                OperationReport report;
                report.failures.push_back({u"/to/1.mp3"_s, Error{ErrorCode::NoSpace, {}, {}}});
                return new OutcomeBox(program.captions, outcomeHeadline(report, program.captions),
                    outcomeLines(report, program.captions), nullptr);
            },
            {}, {u"ravlin!"_s}},
        {u"freedb"_s,
            [](Program &program) {
                static FakePageOwner owner; // outlives all windows
                return new freedb(
                    {owner, program.state, program.tagStore, program.captions, program.settings, program.fileSystem},
                    [] { return QString(); });
            },
            {}, {u"freedb"_s}},
        {u"buscaweb"_s, [](Program &program) { return new buscaweb(program.captions, {}); }},
        {u"matchDialog"_s,
            [](Program &program) {
                static uFREEDB database; // outlives all windows
                return new MatchDialog(program.captions, database, {}, nullptr);
            }},
        {u"patternEditor"_s, [](Program &program) { return new PatternEditor(program.settings, program.captions); }},
        {u"mainform"_s,
            [](Program &program) {
                static QTcpServer silent; // never answers, outlives all windows
                if (!silent.isListening() && !silent.listen(QHostAddress::LocalHost))
                    qFatal("no port to listen on");
                const QString address = u"http://127.0.0.1:%1"_s.arg(silent.serverPort());
                auto *window = new mainform(program.settings, program.captions, program.fileSystem, nullptr, address);
                window->setMinimumWidth(1200); // room for its states in any font: a text that is cut is none of them
                return window;
            },
            {}, connectionStates()},
        {u"frmAbout"_s, [](Program &program) { return new frmAbout(program.captions); }, {},
            {u"ravlin!"_s, u"version "_s + QStringLiteral(RAVLIN_VERSION), u"TagLib"_s, u"freedb"_s,
                u"https://taglib.org/"_s, u"https://gnudb.org/"_s, defaults::WebSite.toString(),
                defaults::Mail.toString()}},
    };
}

/// The headers of an item view. Its rows are the user's data.
QStringList headerTexts(const QAbstractItemView *view)
{
    QStringList texts;
    const QAbstractItemModel *model = view->model();
    if (!model || view->findChildren<QHeaderView *>().isEmpty())
        return texts;
    for (int column = 0; column < model->columnCount(); ++column)
        texts << model->headerData(column, Qt::Horizontal).toString();
    return texts;
}

QStringList ownTexts(const QWidget *widget)
{
    QStringList texts{widget->toolTip(), widget->statusTip(), widget->whatsThis(), widget->accessibleName(),
        widget->accessibleDescription(), widget->windowTitle()};
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        texts << label->text();
    else if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        texts << button->text();
    else if (const auto *box = qobject_cast<const QGroupBox *>(widget))
        texts << box->title();
    else if (const auto *edit = qobject_cast<const QLineEdit *>(widget))
        texts << edit->text() << edit->placeholderText();
    else if (const auto *view = qobject_cast<const QAbstractItemView *>(widget))
        texts << headerTexts(view);
    else if (const auto *list = qobject_cast<const QComboBox *>(widget)) {
        for (int i = 0; i < list->count(); ++i)
            texts << list->itemText(i);
    } else if (const auto *bar = qobject_cast<const QTabBar *>(widget)) {
        for (int tab = 0; tab < bar->count(); ++tab)
            texts << bar->tabText(tab) << bar->tabToolTip(tab);
    }
    return texts;
}

/// All texts of a window and its parts.
QStringList shownTexts(const QWidget *window)
{
    QStringList texts = ownTexts(window);
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        // Qt's own parts use Qt's translations: a combo box's list, the arrows of a row of tabs.
        const bool isQts =
            widget->inherits("QComboBoxPrivateContainer") || qobject_cast<const QComboBox *>(widget->parentWidget()) ||
            (qobject_cast<const QTabBar *>(widget->parentWidget()) && widget->accessibleName().isEmpty());
        if (!isQts)
            texts << ownTexts(widget);
    }
    for (const QAction *action : window->findChildren<QAction *>())
        texts << action->text() << action->toolTip();
    return texts;
}

/// The texts of the tables in the current language, and Qt's own in the windows.
class Spoken
{
public:
    explicit Spoken(const Captions &captions)
    {
        for (int number = 1; number <= CaptionCount; ++number) {
            const QString text = captions.text(static_cast<Caption>(number));
            m_texts << text << QString(text).remove(u'&');
        }
        for (int i = 0; i < TextCount; ++i) {
            const QString text = captions.text(static_cast<Text>(i));
            if (!text.contains(u'%')) {
                m_texts << text;
                continue;
            }
            static const QRegularExpression place(u"\\\\%\\d"_s); // as escape() leaves it
            const QString pattern = QRegularExpression::escape(text).replace(place, u".*"_s);
            m_patterns << QRegularExpression(QRegularExpression::anchoredPattern(pattern));
        }
        for (const auto &[first, second] : {std::pair(Caption::Artist, Caption::Title),
                 std::pair(Caption::Track, Caption::Title), std::pair(Caption::Artist, Caption::Album)}) // naming rules
            m_texts << captions.text(first) + u" - "_s + captions.text(second);
        for (const auto &table : {renamePlaceholders(), extractionPlaceholders(), folderPlaceholders()}) {
            for (const Placeholder &placeholder : table)
                m_texts << placeholderLabel(placeholder, captions.text(placeholder.caption));
        }
        const QStringList genres = genreListEntries();
        m_texts.unite(QSet<QString>(genres.begin(), genres.end()));
        for (const char *arrow : {"Scroll Left", "Scroll Right"})
            m_texts << QCoreApplication::translate("QTabBar", arrow);
    }
    bool has(const QString &text) const
    {
        return m_texts.contains(text) ||
               std::any_of(m_patterns.begin(), m_patterns.end(),
                   [&text](const QRegularExpression &pattern) { return pattern.match(text).hasMatch(); });
    }

private:
    QSet<QString> m_texts;
    QList<QRegularExpression> m_patterns;
};

} // namespace

class TestLanguages : public PrincipalFixture
{
    Q_OBJECT

private:
    static QStringList languages() { return {u"english"_s, u"spanish"_s, u"french"_s}; }

    static QString faultOf(const QString &shown, const Spoken &spoken, const QStringList &fixed)
    {
        static const QRegularExpression shortcut(u" \\((Ctrl|Control|Shift|May|Maj|Alt|F\\d|Del|Ins|Sup)[^)]*\\)$"_s);
        static const QRegularExpression libraries(u"\u00a0?: Qt .*$"_s);
        static const QRegularExpression number(u"^[\\d ./]*(\\d (MiB|Mio))?$"_s);
        for (QString line : shown.split(u'\n')) {
            line.remove(shortcut).remove(libraries);
            if (!number.match(line).hasMatch() && !fixed.contains(line) && !spoken.has(line))
                return line;
        }
        return {};
    }
    static QStringList faultsOf(const QWidget *window, const Captions &captions, const QStringList &fixed)
    {
        const Spoken spoken(captions);
        QStringList faults;
        for (const QString &text : shownTexts(window)) {
            if (const QString fault = faultOf(text, spoken, fixed); !fault.isEmpty())
                faults << fault;
        }
        faults.removeDuplicates();
        return faults;
    }
    static const WindowMaker &maker(const QString &name)
    {
        static const QList<WindowMaker> Makers = windowMakers();
        const auto found =
            std::find_if(Makers.begin(), Makers.end(), [&name](const WindowMaker &made) { return made.name == name; });
        if (found == Makers.end())
            qFatal("no window %s", qPrintable(name));
        return *found;
    }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void everyTextIsInTheLanguageThatIsSpoken_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("language");
        for (const WindowMaker &made : windowMakers()) {
            for (const QString &before : languages()) {
                for (const QString &language : languages())
                    QTest::addRow("%s, %s then %s", qPrintable(made.name), qPrintable(before), qPrintable(language))
                        << made.name << before << language;
            }
        }
    }
    void everyTextIsInTheLanguageThatIsSpoken()
    {
        QFETCH(QString, window);
        QFETCH(QString, before);
        QFETCH(QString, language);
        const WindowMaker &made = maker(window);
        store({{u"idioma"_s, languageCodeFromName(before)}, {u"tags"_s, u"2"_s}});
        Program program;
        program.captions.chooseAtStart(program.settings);
        std::unique_ptr<QWidget> open(made.make(program));
        speakLanguage(program, language);
        if (made.applyCaptions) {
            made.applyCaptions(open.get());
        } else { // a window over another one, or a modal one, is opened anew
            open.reset();
            Settings settings;
            settings.write(settingskey::Idioma, languageCodeFromName(language));
            QVERIFY(settings.save());
            open.reset(made.make(program));
        }
        open->show();
        QCoreApplication::processEvents();
        QCOMPARE(program.captions.languageName(), language);
        QVERIFY(shownTexts(open.get()).size() > 20);
        QCOMPARE(faultsOf(open.get(), program.captions, made.fixed).join(u" | "_s), QString());
    }

    void aTextOfAnotherLanguageIsFound()
    {
        Captions captions;
        captions.setLanguageName(u"french"_s);
        captions.fill();
        const Spoken spoken(captions);
        QCOMPARE(faultOf(u"annuler"_s, spoken, {}), QString());
        QCOMPARE(faultOf(u"cancel"_s, spoken, {}), u"cancel"_s);
        QCOMPARE(faultOf(u"tout selectionner (Ctrl+A)"_s, spoken, {}), QString());
        QCOMPARE(faultOf(u"select all (Ctrl+A)"_s, spoken, {}), u"select all"_s);
        QCOMPARE(faultOf(u"ira dans 3 fichiers"_s, spoken, {}), QString());
        QCOMPARE(faultOf(u"anything else"_s, spoken, {u"anything"_s}), u"anything else"_s);
    }

    void theMainWindowSpeaksAnewWhenTheOptionsClose_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("saved") << u"ok"_s;
        QTest::newRow("cancelled") << u"cancel"_s;
    }
    void theMainWindowSpeaksAnewWhenTheOptionsClose()
    {
        QFETCH(QString, button);
        store({{u"tags"_s, u"2"_s}});
        open();
        control<QAbstractButton>(u"tb_16"_s)->click();
        auto *dialog = control<QDialog>(u"opciones"_s);
        QVERIFY(dialog->isVisible());
        auto *languages = dialog->findChild<QComboBox *>(u"cidioma"_s);
        languages->setFocus();
        QTest::keyClick(languages, Qt::Key_End);
        QCOMPARE(languages->currentText(), u"french"_s);
        QCOMPARE(dialog->findChild<QPushButton *>(u"cancel"_s)->text(), u"annuler"_s);
        QCOMPARE(tabs()->tabText(0), u"id3 tag editor"_s); // not yet
        dialog->findChild<QPushButton *>(button)->click();
        QCOMPARE(tabs()->tabText(0), u"editeur de tag id3"_s);
        QCOMPARE(list()->model()->headerData(5, Qt::Horizontal).toString(), u"années"_s);
        closeWindow();
        open(); // a restart
        QCOMPARE(tabs()->tabText(0), button == u"ok"_s ? u"editeur de tag id3"_s : u"id3 tag editor"_s);
    }

    void questionsHaveYesAndNoInTheLanguage_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("yes");
        QTest::addColumn<QString>("no");
        QTest::newRow("spanish") << u"es"_s << u"elimina id3v1 tag?"_s << u"&Sí"_s << u"&No"_s;
        QTest::newRow("english") << u"en"_s << u"remove id3v1 tag?"_s << u"&Yes"_s << u"&No"_s;
        QTest::newRow("french") << u"fr"_s << u"supprimer tag id3v1?"_s << u"&Oui"_s << u"&Non"_s;
    }
    void questionsHaveYesAndNoInTheLanguage()
    {
        QFETCH(QString, code);
        store({{u"idioma"_s, code}, {u"tags"_s, u"2"_s}});
        addFile(u"a.mp3"_s, audio() + id3v1({.title = "x"}));
        open(path());
        clickRow(0);
        QString question;
        QString yes;
        QString no;
        QString further;
        bool isNoDefault = false;
        QTimer::singleShot(0, this, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box)
                return;
            question = box->text();
            yes = box->button(QMessageBox::Yes)->text();
            no = box->button(QMessageBox::No)->text();
            further = box->informativeText();
            isNoDefault = box->defaultButton() == box->button(QMessageBox::No);
            box->reject();
        });
        control<QPushButton>(u"eliminav1"_s)->click();
        QTEST(question, "question");
        QTEST(yes, "yes");
        QTEST(no, "no");
        QCOMPARE(further, m_program->captions.text(Text::CountFileOne));
        QVERIFY(isNoDefault);
    }
};

QTEST_MAIN(TestLanguages)
#include "tst_languages.moc"
