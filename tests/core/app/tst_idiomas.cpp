// SPDX-License-Identifier: GPL-3.0-or-later
// The interface has 91 captions, letter for letter in three languages, and a text for every error in each. An unknown
// language changes nothing. The settings choose the language at the start.

#include "core/app/idiomas.h"
#include "core/app/settings.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

const QStringList LanguageNames{u"english"_s, u"spanish"_s, u"french"_s};

Caption numbered(int number)
{
    return static_cast<Caption>(number);
}

Captions filled(const QString &language)
{
    Captions captions;
    captions.setLanguageName(language);
    captions.fill();
    return captions;
}

} // namespace

class TestIdiomas : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCaptionLetterForLetter();
    void spotValues();
    void captionsAreEmptyAtFirst();
    void anUnknownLanguageChangesNothing();
    void aNewLanguageTakesEffectWithTheFill();
    void localeIsTheLanguages();
    void numbersOutsideAreEmpty();
    void codesAndNames();
    void languageAtStart_data();
    void languageAtStart();
    void furtherTextsAreThereInEveryLanguage();
    void noFrenchMarkBeginsALine();
    void everyErrorHasASentenceOfItsOwn();
    void theLowSpaceErrorIsItsCaption();
};

void TestIdiomas::everyCaptionLetterForLetter()
{
    QFile file(qEnvironmentVariable("RAVLIN_SOURCE_DIR") + u"/tests/core/app/captions.tsv"_s);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    const Captions english = filled(u"english"_s);
    const Captions spanish = filled(u"spanish"_s);
    const Captions french = filled(u"french"_s);
    int number = 0;
    while (!file.atEnd()) {
        QByteArray line = file.readLine();
        line.chop(1);
        const QStringList cells = QString::fromUtf8(line).split(u'\t');
        QCOMPARE(cells.size(), 4);
        QCOMPARE(cells[0].toInt(), ++number);
        QCOMPARE(english.text(numbered(number)), cells[1]);
        QCOMPARE(spanish.text(numbered(number)), cells[2]);
        QCOMPARE(french.text(numbered(number)), cells[3]);
    }
    QCOMPARE(number, 91);
}

void TestIdiomas::spotValues()
{
    const Captions english = filled(u"english"_s);
    const Captions spanish = filled(u"spanish"_s);
    const Captions french = filled(u"french"_s);
    QCOMPARE(english.text(numbered(1)), u"&previous"_s);
    QCOMPARE(spanish.text(numbered(5)), u"MAYÚSCULAS"_s);
    QCOMPARE(french.text(numbered(9)), u"underscores ben espaces"_s);
    QCOMPARE(french.text(numbered(12)), u"années"_s);
    QCOMPARE(french.text(numbered(44)), u"nom de fichier mp3 vers tag i"_s);
    QCOMPARE(french.text(numbered(62)), u"mise à jour ravlin!"_s);
    QCOMPARE(french.text(numbered(71)), u"nouvelle versionon"_s);
    QCOMPARE(english.text(numbered(76)), u"lenguage"_s);
    QCOMPARE(spanish.text(numbered(82)), u"guarda id3v2 y borra id3v1"_s);
    QCOMPARE(english.text(numbered(91)), u"you have the last version"_s);
    for (const Captions *captions : {&english, &spanish, &french}) {
        for (int number = 1; number <= 91; ++number)
            QCOMPARE(captions->text(numbered(number)).isEmpty(), number == 46);
    }
}

void TestIdiomas::captionsAreEmptyAtFirst()
{
    const Captions captions;
    QCOMPARE(captions.languageName(), u"english"_s);
    for (int number = 1; number <= 91; ++number)
        QCOMPARE(captions.text(numbered(number)), QString());
}

void TestIdiomas::anUnknownLanguageChangesNothing()
{
    for (const QString &unknown : {u"german"_s, u"fr"_s, u"French"_s, QString()}) {
        Captions captions;
        captions.setLanguageName(unknown);
        captions.fill();
        QCOMPARE(captions.text(numbered(1)), QString());

        captions.setLanguageName(u"french"_s);
        captions.fill();
        captions.setLanguageName(unknown);
        captions.fill();
        QCOMPARE(captions.text(numbered(2)), u"s&uivant"_s);
        QCOMPARE(captions.text(Text::ErrorNoSpace), u"le disque est plein"_s);
        QCOMPARE(captions.languageName(), unknown);
    }
}

void TestIdiomas::aNewLanguageTakesEffectWithTheFill()
{
    Captions captions = filled(u"english"_s);
    captions.setLanguageName(u"spanish"_s);
    QCOMPARE(captions.text(numbered(10)), u"files"_s);
    QCOMPARE(captions.text(Text::ErrorNoSpace), u"the disk is full"_s);
    captions.fill();
    QCOMPARE(captions.text(numbered(10)), u"archivos"_s);
    QCOMPARE(captions.text(Text::ErrorNoSpace), u"el disco está lleno"_s);
}

void TestIdiomas::localeIsTheLanguages()
{
    const QLocale before;
    QLocale::setDefault(QLocale::c());
    QCOMPARE(filled(u"spanish"_s).locale().language(), QLocale::Spanish);
    QCOMPARE(filled(u"french"_s).locale().language(), QLocale::French);
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Mexico));
    QCOMPARE(filled(u"spanish"_s).locale(), QLocale(QLocale::Spanish, QLocale::Mexico));
    QCOMPARE(filled(u"english"_s).locale().language(), QLocale::English);
    QLocale::setDefault(before);
}

void TestIdiomas::numbersOutsideAreEmpty()
{
    const Captions captions = filled(u"english"_s);
    for (const int number : {0, -1, 92, 1000000})
        QCOMPARE(captions.text(numbered(number)), QString());
}

void TestIdiomas::codesAndNames()
{
    QCOMPARE(languageNameFromCode(u"es"), u"spanish"_s);
    QCOMPARE(languageNameFromCode(u"en"), u"english"_s);
    QCOMPARE(languageNameFromCode(u"fr"), u"french"_s);
    QCOMPARE(languageNameFromCode(u"de"), QString());
    QCOMPARE(languageNameFromCode(u"ES"), QString());
    QCOMPARE(languageNameFromCode(u""), QString());
    QCOMPARE(languageCodeFromName(u"spanish"), u"es"_s);
    QCOMPARE(languageCodeFromName(u"english"), u"en"_s);
    QCOMPARE(languageCodeFromName(u"french"), u"fr"_s);
    QCOMPARE(languageCodeFromName(u"german"), QString());
}

void TestIdiomas::languageAtStart_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("files");

    QTest::newRow("no key: English") << QString() << u"english"_s << u"files"_s;
    QTest::newRow("es") << u"es"_s << u"spanish"_s << u"archivos"_s;
    QTest::newRow("en") << u"en"_s << u"english"_s << u"files"_s;
    QTest::newRow("fr") << u"fr"_s << u"french"_s << u"fichiers"_s;
    QTest::newRow("any other code: English") << u"de"_s << u"english"_s << u"files"_s;
    QTest::newRow("a name is no code: English") << u"french"_s << u"english"_s << u"files"_s;
}

void TestIdiomas::languageAtStart()
{
    QFETCH(QString, stored);
    const QTemporaryDir folder;
    Settings settings(folder.filePath(u"ravlin.ini"_s));
    if (!stored.isEmpty())
        settings.write(settingskey::Idioma, stored);

    Captions captions = filled(u"french"_s); // whatever it was before
    captions.chooseAtStart(settings);
    QTEST(captions.languageName(), "language");
    QTEST(captions.text(numbered(10)), "files");
}

void TestIdiomas::furtherTextsAreThereInEveryLanguage()
{
    for (const QString &language : LanguageNames) {
        const Captions captions = filled(language);
        for (int i = 0; i < TextCount; ++i) {
            const QString text = captions.text(static_cast<Text>(i));
            QVERIFY(!text.isEmpty());
            QCOMPARE(text, text.trimmed());
            QVERIFY2(!text.endsWith(u'.'), qPrintable(text));
            QVERIFY2(text.front() == text.front().toLower(), qPrintable(text));
        }
    }
    QCOMPARE(Captions().text(Text::ErrorNoSpace), u"the disk is full"_s); // before the first fill
}

void TestIdiomas::noFrenchMarkBeginsALine()
{
    const Captions french = filled(u"french"_s);
    static const QRegularExpression breakable(u"(?<!\u00a0)[:;?»]| !|«(?!\u00a0)"_s);
    for (int i = 0; i < TextCount; ++i) {
        const QString text = french.text(static_cast<Text>(i));
        QVERIFY2(!breakable.match(text).hasMatch(), qPrintable(text));
    }
    QCOMPARE(french.mark(u':'), u"\u00a0:"_s);
    QCOMPARE(filled(u"spanish"_s).mark(u';'), u";"_s);
    QCOMPARE(Captions().mark(u':'), u":"_s);
}

void TestIdiomas::everyErrorHasASentenceOfItsOwn()
{
    for (const QString &language : LanguageNames) {
        const Captions captions = filled(language);
        QSet<QString> sentences;
        const int last = static_cast<int>(ErrorCode::NotMp3Content);
        for (int code = 0; code <= last; ++code)
            sentences += captions.errorText(static_cast<ErrorCode>(code));
        // A request that is not valid was no search for something.
        for (const QString &word : {u"does not exist"_s, u"no existe"_s, u"n'existe pas"_s})
            QVERIFY(!captions.errorText(ErrorCode::InvalidArgument).contains(word));
        QCOMPARE(sentences.size(), last + 1);
        QVERIFY(!sentences.contains(QString()));
    }
    QCOMPARE(filled(u"english"_s).errorText(ErrorCode::ReadOnly), u"the file is read-only"_s);
    QCOMPARE(filled(u"spanish"_s).errorText(ErrorCode::NoSpace), u"el disco está lleno"_s);
    QCOMPARE(filled(u"french"_s).errorText(ErrorCode::BrokenTag), u"le tag est endommagé et reste tel quel"_s);
}

void TestIdiomas::theLowSpaceErrorIsItsCaption()
{
    QCOMPARE(filled(u"english"_s).errorText(ErrorCode::LowSpace), u"low disk space, operation cancelled"_s);
    QCOMPARE(filled(u"spanish"_s).errorText(ErrorCode::LowSpace), u"poco espacio en disco, operación cancelada"_s);
    QCOMPARE(filled(u"french"_s).errorText(ErrorCode::LowSpace), u"espace disque faible, opération annulée"_s);
}

QTEST_GUILESS_MAIN(TestIdiomas)
#include "tst_idiomas.moc"
