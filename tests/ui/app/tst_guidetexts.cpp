// SPDX-License-Identifier: GPL-3.0-or-later
// The user guide agrees with the program: each quoted caption is in the program's tables in that language, each key has
// the program's name, and the table of keys lists the window's commands, all of them.

#include "core/app/texttable.h"
#include "ui/app/principalfixture.h"

#include <QAction>
#include <QKeySequence>
#include <QRegularExpression>
#include <QSet>
#include <QXmlStreamReader>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

using KeyAndCommand = std::pair<QString, QString>;

/// What the guide quotes from the program.
struct Quotations
{
    QStringList captions;
    QStringList keys;
    QSet<KeyAndCommand> commands; ///< the rows of the table of keys
    QString error;
};

QString attribute(const QXmlStreamReader &reader, const QString &name)
{
    return reader.attributes().value(name).toString();
}

/// Reads a page, which is well-formed XML besides being HTML.
Quotations quotationsOf(const QString &page)
{
    Quotations quotations;
    QFile file(page);
    if (!file.open(QIODevice::ReadOnly)) {
        quotations.error = file.errorString();
        return quotations;
    }
    QXmlStreamReader reader(&file);
    bool isInCommands = false;
    KeyAndCommand row;
    while (!reader.atEnd()) {
        reader.readNext();
        const bool starts = reader.isStartElement();
        if (reader.name() == u"table" && (starts || reader.isEndElement())) {
            isInCommands = starts && attribute(reader, u"id"_s) == u"commands";
        } else if (starts && reader.name() == u"kbd") {
            row.first = reader.readElementText();
            quotations.keys << row.first;
        } else if (starts && attribute(reader, u"class"_s) == u"ui") {
            row.second = reader.readElementText();
            quotations.captions << row.second;
        } else if (reader.name() == u"tr") {
            if (isInCommands && !starts && !row.first.isEmpty())
                quotations.commands << row;
            row = {};
        }
    }
    if (reader.hasError())
        quotations.error = u"line %1: %2"_s.arg(reader.lineNumber()).arg(reader.errorString());
    return quotations;
}

/// Whether the program shows this text somewhere in the current language.
bool isShown(const QString &text, const Captions &captions)
{
    if (text == u"tags" || text == u"email") // the same in every language
        return true;
    for (int number = 1; number <= CaptionCount; ++number) {
        if (captions.text(static_cast<Caption>(number)).remove(u'&') == text)
            return true;
    }
    for (int number = 0; number < TextCount; ++number) {
        static const QRegularExpression place(u"\\\\%\\d"_s); // as escape() leaves it
        const QString shown = captions.text(static_cast<Text>(number)).remove(u'&');
        const QString pattern = QRegularExpression::escape(shown).replace(place, u".+"_s);
        const bool isAnyText = !shown.isEmpty() && shown.contains(u'%') && shown.size() < 4;
        if (!isAnyText && QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch())
            return true;
    }
    return false;
}

/// Whether it is the name of a key or modifier, as menus show it in this language.
bool isKey(const QString &name)
{
    for (const Qt::KeyboardModifier held : {Qt::ControlModifier, Qt::ShiftModifier, Qt::AltModifier}) {
        const QString sample = QKeySequence(held | Qt::Key_A).toString(QKeySequence::NativeText);
        if (sample.section(u'+', 0, 0) == name)
            return true;
    }
    const QKeySequence key = QKeySequence::fromString(name, QKeySequence::NativeText);
    return key.count() == 1 && key[0].key() != Qt::Key_unknown && key.toString(QKeySequence::NativeText) == name;
}

} // namespace

class TestGuideTexts : public PrincipalFixture
{
    Q_OBJECT

private:
    static QString page(const QString &code)
    {
        return qEnvironmentVariable("RAVLIN_SOURCE_DIR") + u"/docs/guide/"_s + code + u"/index.html"_s;
    }
    void openIn(const QString &code)
    {
        store({{u"idioma"_s, code}, {u"tags"_s, u"2"_s}});
        open();
    }
    static void addLanguages()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("english") << u"en"_s;
        QTest::newRow("spanish") << u"es"_s;
        QTest::newRow("french") << u"fr"_s;
    }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void everyCaptionIsOneOfTheProgram_data() { addLanguages(); }
    void everyCaptionIsOneOfTheProgram()
    {
        QFETCH(QString, code);
        const Quotations quotations = quotationsOf(page(code));
        QCOMPARE(quotations.error, QString());
        QVERIFY(quotations.captions.size() > 80);
        Captions captions;
        captions.setLanguageName(languageNameFromCode(code));
        captions.fill();
        for (const QString &caption : quotations.captions)
            QVERIFY2(isShown(caption, captions), qPrintable(caption));
    }

    void everyKeyBearsTheNameThatTheProgramGivesIt_data() { addLanguages(); }
    void everyKeyBearsTheNameThatTheProgramGivesIt()
    {
        QFETCH(QString, code);
        openIn(code);
        const Quotations quotations = quotationsOf(page(code));
        QVERIFY(quotations.keys.size() > 30);
        for (const QString &key : quotations.keys)
            QVERIFY2(isKey(key), qPrintable(key));
    }

    void theTableOfKeysIsThatOfTheWindow_data() { addLanguages(); }
    void theTableOfKeysIsThatOfTheWindow()
    {
        QFETCH(QString, code);
        openIn(code);
        QSet<KeyAndCommand> commands;
        for (const QAction *action : m_window->findChildren<QAction *>()) {
            const QString key = action->shortcut().toString(QKeySequence::NativeText);
            const bool isOurs = qobject_cast<const QLineEdit *>(action->parent()) == nullptr;
            if (!key.isEmpty() && isOurs)
                commands.insert({key, action->text().remove(u'&')});
        }
        QVERIFY(commands.size() > 10);
        const QSet<KeyAndCommand> written = quotationsOf(page(code)).commands;
        const auto listed = [](const QSet<KeyAndCommand> &set) {
            QStringList lines;
            for (const auto &[key, command] : set)
                lines << key + u": "_s + command;
            lines.sort();
            return lines.join(u" | "_s);
        };
        QCOMPARE(listed(written), listed(commands));
    }

    void aWrongCaptionOrKeyWouldBeFound()
    {
        openIn(u"fr"_s);
        Captions captions;
        captions.setLanguageName(u"french"_s);
        captions.fill();
        QVERIFY(isShown(u"annuler"_s, captions));
        QVERIFY(isShown(u"ira dans 4 fichiers"_s, captions));
        QVERIFY(!isShown(u"cancel"_s, captions));
        QVERIFY(!isShown(u"annule"_s, captions));
        QVERIFY(isKey(u"Maj+F6"_s));
        QVERIFY(isKey(u"Maj"_s));
        QVERIFY(!isKey(u"Shift+F6"_s));
        QVERIFY(!isKey(u"F6, F7"_s));
        QVERIFY(!isKey(u"nothing"_s));
    }
};

QTEST_MAIN(TestGuideTexts)
#include "tst_guidetexts.moc"
