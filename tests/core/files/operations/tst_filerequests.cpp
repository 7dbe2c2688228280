// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: clsFileFunc makes one request of any number of paths and returns the service's result unchanged. With an
// empty source or destination it does nothing and returns 0.

#include "core/files/operations/clsfilefunc.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

namespace {

/// Records the requests and returns a fixed result.
class RecordingService final : public FileService
{
public:
    int perform(const FileRequest &request) override
    {
        requests.append(request);
        return result;
    }

    QList<FileRequest> requests;
    int result = 0;
};

} // namespace

class TestFileRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deletingThreeRowsIsOneRequest();
    void aRowOfARecursiveListing();
    void undoIsAddedOnce_data();
    void undoIsAddedOnce();
    void eachOperationHasItsNumber();
    void emptyTextsDoNothing();
    void theResultIsHandedBack();
    void noRowsNoSource();
};

void TestFileRequests::deletingThreeRowsIsOneRequest()
{
    RecordingService service;
    clsFileFunc files(platform::FileSystem::native(), service);
    files.DeleteFile(sourceList(u"/m/"_s, {u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}));
    QCOMPARE(service.requests.size(), 1);
    const FileRequest &request = service.requests.front();
    QCOMPARE(request.source, QString(u"/m/a.mp3"_s + QChar(0) + u"/m/b.mp3"_s + QChar(0) + u"/m/c.mp3"_s + QChar(0)));
    QCOMPARE(sourcePaths(request.source), (QStringList{u"/m/a.mp3"_s, u"/m/b.mp3"_s, u"/m/c.mp3"_s}));
    QCOMPARE(request.operation, FileOperation::Delete);
    QCOMPARE(request.destination, QString());
    QCOMPARE(request.owner, quintptr(0));
    QCOMPARE(request.flags, 64);
}

void TestFileRequests::aRowOfARecursiveListing()
{
    QCOMPARE(sourcePaths(sourceList(u"/m/"_s, {u"cd1/a.mp3"_s})), QStringList{u"/m/cd1/a.mp3"_s});
}

void TestFileRequests::undoIsAddedOnce_data()
{
    QTest::addColumn<bool>("allowUndo");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("expected");
    QTest::newRow("flags exactly 64 keep 64") << true << 64 << 64;
    QTest::newRow("added to none") << true << 0 << 64;
    QTest::newRow("added to others") << true << 16 << 80;
    QTest::newRow("others with it already") << true << 80 << 80;
    QTest::newRow("not asked for") << false << 16 << 16;
    QTest::newRow("not asked for, but there") << false << 64 << 64;
}

void TestFileRequests::undoIsAddedOnce()
{
    QFETCH(bool, allowUndo);
    QFETCH(int, flags);
    QFETCH(int, expected);
    RecordingService service;
    clsFileFunc files(platform::FileSystem::native(), service);
    files.CopyFile(u"/a"_s, u"/b"_s, allowUndo, flags);
    files.MoveFile(u"/a"_s, u"/b"_s, allowUndo, flags);
    files.RenameFile(u"/a"_s, u"/b"_s, allowUndo, flags);
    files.DeleteFile(u"/a"_s, allowUndo, flags);
    QCOMPARE(service.requests.size(), 4);
    for (const FileRequest &request : service.requests)
        QCOMPARE(request.flags, expected);
}

void TestFileRequests::eachOperationHasItsNumber()
{
    RecordingService service;
    clsFileFunc files(platform::FileSystem::native(), service);
    files.MoveFile(u"/a"_s, u"/b"_s);
    files.CopyFile(u"/a"_s, u"/b"_s);
    files.DeleteFile(u"/a"_s);
    files.RenameFile(u"/a"_s, u"/b"_s, true);
    QList<int> numbers;
    for (const FileRequest &request : service.requests)
        numbers.append(static_cast<int>(request.operation));
    QCOMPARE(numbers, (QList<int>{1, 2, 3, 4}));
    QCOMPARE(service.requests[0].destination, u"/b"_s);
    QCOMPARE(service.requests[3].destination, u"/b"_s);
}

void TestFileRequests::emptyTextsDoNothing()
{
    RecordingService service;
    service.result = 7;
    clsFileFunc files(platform::FileSystem::native(), service);
    QCOMPARE(files.CopyFile({}, u"/b"_s), 0);
    QCOMPARE(files.CopyFile(u"/a"_s, {}), 0);
    QCOMPARE(files.MoveFile({}, u"/b"_s), 0);
    QCOMPARE(files.MoveFile(u"/a"_s, {}), 0);
    QCOMPARE(files.RenameFile({}, u"/b"_s, true), 0);
    QCOMPARE(files.RenameFile(u"/a"_s, {}, true), 0);
    QCOMPARE(files.DeleteFile({}), 0);
    QVERIFY(service.requests.isEmpty());
}

void TestFileRequests::theResultIsHandedBack()
{
    RecordingService service;
    service.result = 4711;
    clsFileFunc files(platform::FileSystem::native(), service);
    QCOMPARE(files.CopyFile(u"/a"_s, u"/b"_s), 4711);
    QCOMPARE(files.MoveFile(u"/a"_s, u"/b"_s), 4711);
    QCOMPARE(files.RenameFile(u"/a"_s, u"/b"_s, false), 4711);
    QCOMPARE(files.DeleteFile(u"/a"_s), 4711);
}

void TestFileRequests::noRowsNoSource()
{
    QVERIFY(sourceList(u"/m/"_s, {}).isEmpty());
    QVERIFY(sourcePaths({}).isEmpty());
}

QTEST_GUILESS_MAIN(TestFileRequests)

#include "tst_filerequests.moc"
