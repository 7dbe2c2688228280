// SPDX-License-Identifier: GPL-3.0-or-later
// The user guide is found beside the program or where the system keeps documentation, in the interface's language.

#include "core/app/idiomas.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestGuide : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString page(const QString &folder, const QString &code) const
    {
        const QString name = path(folder + u'/' + code + u"/index.html"_s);
        QFile file(name);
        if (!QDir().mkpath(path(folder + u'/' + code)) || !file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(name));
        return name;
    }

private Q_SLOTS:
    void cleanup()
    {
        QVERIFY(QDir(m_folder.path()).removeRecursively());
        QVERIFY(QDir().mkpath(path(u"bin"_s)));
    }

    void withoutAGuideThereIsNoPage()
    {
        for (const QString &language : {u"english"_s, u"spanish"_s, u"french"_s})
            QCOMPARE(guidePage(path(u"bin"_s), language), QString());
    }

    void itIsFoundWhereTheSystemKeepsDocumentation()
    {
        const QString spanish = page(u"share/doc/ravlin/guide"_s, u"es"_s);
        const QString english = page(u"share/doc/ravlin/guide"_s, u"en"_s);
        QCOMPARE(guidePage(path(u"bin"_s), u"spanish"_s), spanish);
        QCOMPARE(guidePage(path(u"bin"_s), u"english"_s), english);
    }

    void itIsFoundBesideTheProgramFirst()
    {
        page(u"share/doc/ravlin/guide"_s, u"fr"_s);
        const QString beside = page(u"bin/guide"_s, u"fr"_s);
        QCOMPARE(guidePage(path(u"bin"_s), u"french"_s), beside);
    }

    void aLanguageThatIsMissingIsReplacedByEnglish()
    {
        const QString english = page(u"bin/guide"_s, u"en"_s);
        QCOMPARE(guidePage(path(u"bin"_s), u"french"_s), english);
        QCOMPARE(guidePage(path(u"bin"_s), u"no language"_s), english);
    }

    void aFolderOfThePagesNameIsNoPage()
    {
        QVERIFY(QDir().mkpath(path(u"bin/guide/en/index.html"_s)));
        QCOMPARE(guidePage(path(u"bin"_s), u"english"_s), QString());
    }

    void theBuildTreeHasOneInAllLanguages()
    {
        for (const auto &[language, code] :
            {std::pair(u"english"_s, u"en"_s), std::pair(u"spanish"_s, u"es"_s), std::pair(u"french"_s, u"fr"_s)}) {
            const QString found = guidePage(qEnvironmentVariable("RAVLIN_BIN_DIR"), language);
            QVERIFY2(found.endsWith(u"/guide/"_s + code + u"/index.html"_s), qPrintable(found));
        }
    }
};

QTEST_GUILESS_MAIN(TestGuide)
#include "tst_guide.moc"
