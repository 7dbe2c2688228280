// SPDX-License-Identifier: GPL-3.0-or-later
// The main window shows every text in the current language and every part in its place at any width; the Tab key visits
// the parts in order, and each has a name.

#include "core/app/texttable.h"
#include "core/naming/placeholders.h"
#include "ui/app/principalfixture.h"
#include "ui/controls/esperate.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QHeaderView>
#include <QScrollBar>
#include <QSet>
#include <QTabBar>
#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestPrincipalLook : public PrincipalFixture
{
    Q_OBJECT

private:
    static QStringList languages() { return {u"english"_s, u"spanish"_s, u"french"_s}; }

    /// All texts that the window may show for these three files, two of them selected, in the current language.
    QSet<QString> allowedTexts() const
    {
        const Captions &captions = m_program->captions;
        QSet<QString> allowed{QString(), u"ravlin!"_s, u"id3v1"_s, u"id3v2"_s, u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s,
            u"3 / 3"_s, at(u"a.mp3"_s), u"128 kbps"_s, u"44100 hz"_s, control<QLabel>(u"size"_s)->text(),
            control<QLabel>(u"time"_s)->text(), control<QLabel>(u"time"_s)->toolTip()};
        for (int number = 1; number <= CaptionCount; ++number)
            allowed << captions.text(static_cast<Caption>(number));
        for (int text = 0; text < TextCount; ++text) {
            const QString words = captions.text(static_cast<Text>(text));
            allowed << (words.contains(u"%1"_s) ? words.arg(2) : words);
        }
        allowed << u"3 "_s + captions.text(Caption::Files);
        for (const Caption field : {Caption::Track, Caption::Artist}) // the rules of the renaming
            allowed << captions.text(field) + u" - "_s + captions.text(Caption::Title);
        for (const auto &table : {renamePlaceholders(), extractionPlaceholders()}) {
            for (const Placeholder &placeholder : table)
                allowed << placeholderLabel(placeholder, captions.text(placeholder.caption));
        }
        return allowed;
    }
    /// A tooltip adds the key in brackets.
    static QString withoutShortcut(const QAction &action)
    {
        const QString keys = u" (%1)"_s.arg(action.shortcut().toString(QKeySequence::NativeText));
        const QString tip = action.toolTip();
        return tip.endsWith(keys) ? tip.chopped(keys.size()) : tip;
    }
    QStringList shownTexts() const
    {
        QStringList texts;
        for (const QWidget *widget : m_window->findChildren<QWidget *>()) {
            // Qt's own parts use Qt's translations.
            const bool isQtsOwn = qobject_cast<const QTabBar *>(widget->parentWidget()) != nullptr;
            if (widget->inherits("QComboBoxPrivateContainer") || isQtsOwn)
                continue;
            const auto *toolButton = qobject_cast<const QToolButton *>(widget);
            const QAction *action = toolButton ? toolButton->defaultAction() : nullptr;
            texts << (action ? withoutShortcut(*action) : widget->toolTip());
            texts << widget->accessibleName() << widget->accessibleDescription();
            if (const auto *label = qobject_cast<const QLabel *>(widget))
                texts << label->text();
            else if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
                texts << button->text();
            else if (const auto *bar = qobject_cast<const QTabBar *>(widget)) {
                for (int tab = 0; tab < bar->count(); ++tab)
                    texts << bar->tabText(tab) << bar->tabToolTip(tab);
            }
        }
        for (const QAction *action : m_window->findChildren<QAction *>())
            texts << action->text() << withoutShortcut(*action);
        for (int column = 0; column < 8; ++column)
            texts << list()->model()->headerData(column, Qt::Horizontal).toString();
        texts << m_window->windowTitle() << m_window->findChild<esperate *>()->windowTitle();
        return texts;
    }

    void addFiles(int count) const
    {
        for (int i = 0; i < count; ++i)
            addFile(QString(QChar(u'a' + i % 26)) + (i < 26 ? QString() : QString::number(i)) + u".mp3"_s,
                titled(u"x"_s) + id3v1({.title = "x"}));
    }
    void openWithTwoSelected()
    {
        addFiles(3);
        open(path(), QSize(1000, 700));
        clickRow(0);
        list()->selectionModel()->select(
            list()->model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    static QString nameOf(const QWidget *widget)
    {
        return widget->objectName().isEmpty() ? QString::fromLatin1(widget->metaObject()->className())
                                              : widget->objectName();
    }
    /// The visible children of a widget that overlap another one or leave the widget.
    static QStringList misplacedChildren(const QWidget *parent)
    {
        QStringList faults;
        QList<const QWidget *> placed;
        for (const QWidget *child : parent->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
            if (!child->isVisible() || child->isWindow() || child->inherits("QRubberBand"))
                continue;
            if (!parent->rect().contains(child->geometry()))
                faults << nameOf(child) + u" is outside "_s + nameOf(parent);
            for (const QWidget *other : placed) {
                if (other->geometry().intersects(child->geometry()))
                    faults << nameOf(child) + u" overlaps "_s + nameOf(other);
            }
            placed << child;
        }
        return faults;
    }
    QStringList misplaced() const
    {
        QStringList faults = misplacedChildren(m_window.get());
        for (const QWidget *widget : m_window->findChildren<QWidget *>()) {
            const bool isScrolled = qobject_cast<const QAbstractScrollArea *>(widget->parentWidget()) != nullptr;
            if (!isScrolled && widget->isVisible() && !widget->isWindow() && !widget->inherits("QTabBar"))
                faults << misplacedChildren(widget);
        }
        return faults;
    }
    /// Labels and buttons of the pages that are smaller than their text.
    QStringList cutTexts() const
    {
        QStringList cut;
        for (const QWidget *widget : tabs()->findChildren<QWidget *>()) {
            const bool hasText =
                qobject_cast<const QLabel *>(widget) ||
                (qobject_cast<const QAbstractButton *>(widget) && !widget->parent()->inherits("QTabBar"));
            if (hasText && widget->isVisible() &&
                (widget->width() < widget->sizeHint().width() || widget->height() < widget->minimumSizeHint().height()))
                cut << nameOf(widget);
        }
        return cut;
    }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void everyTextIsInTheLanguageThatIsSpoken_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("language");
        for (const QString &before : languages()) {
            for (const QString &language : languages())
                QTest::newRow(qPrintable(before + u" then "_s + language)) << before << language;
        }
    }
    void everyTextIsInTheLanguageThatIsSpoken()
    {
        QFETCH(QString, before);
        QFETCH(QString, language);
        openWithTwoSelected();
        QTRY_COMPARE(control<QLabel>(u"mode"_s)->text(), u"128 kbps"_s);
        speak(before);
        speak(language);
        const QSet<QString> allowed = allowedTexts();
        const QStringList shown = shownTexts();
        QVERIFY(shown.contains(m_program->captions.text(Caption::SingleFileTab)));
        for (const QString &text : shown)
            QVERIFY2(allowed.contains(text), qPrintable(text));
    }

    void theHeadersAreThoseOfTheLanguage_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("headers");
        const QStringList fixed{u"id3v1"_s, u"id3v2"_s};
        QTest::newRow("spanish")
            << u"spanish"_s
            << (QStringList{u"fichero"_s, u"pista"_s, u"título"_s, u"artista"_s, u"album"_s, u"año"_s} + fixed);
        QTest::newRow("english")
            << u"english"_s
            << (QStringList{u"file"_s, u"track"_s, u"title"_s, u"artist"_s, u"album"_s, u"year"_s} + fixed);
        QTest::newRow("french")
            << u"french"_s
            << (QStringList{u"fichier"_s, u"piste"_s, u"titre"_s, u"artiste"_s, u"album"_s, u"années"_s} + fixed);
    }
    void theHeadersAreThoseOfTheLanguage()
    {
        QFETCH(QString, language);
        open();
        speak(language);
        QStringList headers;
        for (int column = 0; column < 8; ++column)
            headers << list()->model()->headerData(column, Qt::Horizontal).toString();
        QTEST(headers, "headers");
    }

    void everythingIsInItsPlace_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("language");
        for (const int width : {400, 700, 1000, 1920}) {
            for (const QString &language : languages())
                QTest::addRow("%d pixels, %s", width, qPrintable(language)) << width << language;
        }
    }
    void everythingIsInItsPlace()
    {
        QFETCH(int, width);
        QFETCH(QString, language);
        addFiles(40);
        open(path(), QSize(width, 700));
        clickRow(0);
        QTRY_COMPARE(control<QLabel>(u"mode"_s)->text(), u"128 kbps"_s);
        speak(language);
        QCOMPARE(m_window->width(), width);
        // Nested layouts need a few rounds of the event loop.
        QTRY_COMPARE(misplaced().join(u", "_s), QString());
        if (width >= 700)
            QTRY_COMPARE(cutTexts().join(u", "_s), QString());
        QVERIFY2(list()->height() > 100, qPrintable(QString::number(list()->height())));
    }

    void theStatusPanelsShowWholeLetters()
    {
        addFiles(3);
        open(path(), QSize(1000, 700));
        for (const QString &name : {u"panel1"_s, u"panel2"_s}) {
            const auto *panel = control<QLabel>(name);
            QVERIFY(panel->contentsRect().height() >= panel->fontMetrics().height());
            QCOMPARE(panel->text(), panel->accessibleName()); // nothing left out at this width
        }
    }

    void theWidthsAreThoseOfTheRule()
    {
        open({}, QSize(1000, 700));
        QCOMPARE(control(u"sp2"_s)->width(), 1000 - 13);
        QCOMPARE(control(u"tb"_s)->width(), 1000 - 13);
        QCOMPARE(tabs()->width(), 1000 - 53);
        m_window->resize(1300, 700);
        QCoreApplication::processEvents();
        QCOMPARE(control(u"sp2"_s)->width(), 1300 - 13);
        QCOMPARE(tabs()->width(), 1300 - 53);
        const QWidget *area = m_window->centralWidget();
        const int between = area->height() - control(u"tb"_s)->height() - tabs()->height();
        QVERIFY(between - control(u"sp2"_s)->height() <= 12);
    }

    void theTabKeyGoesAsTheEyeDoes()
    {
        addFiles(3);
        open(path(), QSize(1000, 700));
        clickRow(0);
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        control(u"tb_12"_s)->setFocus();
        QStringList way;
        do {
            // The toolbar's buttons don't matter here.
            if (const QString name = nameOf(QApplication::focusWidget()); !name.startsWith(u"tb_"_s))
                way << name;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        } while (QApplication::focusWidget() != control(u"tb_12"_s) && way.size() < 40);
        QCOMPARE(way.join(u' '),
            u"folder pbSplit ListView1 qt_tabwidget_tabbar pfile nfile Ttitulo Tpista tartista ta_o talbum "
            u"cestilo tcomentarios eliminav1 eliminav2 op4_2 ccase_2 edita"_s);
    }

    void everyPartThatTakesTheFocusHasAName()
    {
        openWithTwoSelected();
        for (const QString &language : languages()) {
            speak(language);
            for (const QWidget *widget : m_window->findChildren<QWidget *>()) {
                const auto *button = qobject_cast<const QAbstractButton *>(widget);
                const bool hasText = button && !button->text().isEmpty();
                if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy() && !hasText)
                    QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(nameOf(widget)));
            }
        }
    }

    void theToolbarsTooltipTellsTheShortcut()
    {
        open();
        QCOMPARE(control(u"tb_12"_s)->toolTip(), u"select all (Ctrl+A)"_s);
    }

    void theWaitWindowsTitleIsTranslated()
    {
        open();
        const auto *waiting = m_window->findChild<esperate *>();
        QCOMPARE(waiting->windowTitle(), u"one moment, please"_s);
        speak(u"spanish"_s);
        QCOMPARE(waiting->windowTitle(), u"un momento, por favor"_s);
    }
};

QTEST_MAIN(TestPrincipalLook)
#include "tst_principallook.moc"
