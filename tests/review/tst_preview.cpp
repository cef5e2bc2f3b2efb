#include "base/FileSystem.h"
#include "review/PreviewView.h"
#include "review/PreviewWindow.h"
#include "review/StatusTexts.h"
#include "support/TempTree.h"

#include <QBuffer>
#include <QPainter>
#include <QPdfDocument>
#include <QPdfWriter>
#include <QtTest>

namespace {

QByteArray pngBytes(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(200, 80, 40));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

QByteArray pdfBytes(int pages) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(QPageSize::A5));
        QPainter painter(&writer);
        for (int page = 0; page < pages; ++page) {
            if (page > 0)
                writer.newPage();
            painter.drawText(QPointF(100, 200), QStringLiteral("Page %1").arg(page + 1));
        }
    }
    return buffer.data();
}

} // namespace

class TestPreview : public QObject {
    Q_OBJECT

private slots:
    void showsEachKindOfFile_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<PreviewView::Mode>("mode");
        QByteArray binary;
        for (int i = 0; i < 3000; ++i)
            binary.append(static_cast<char>((i * 37) % 256));
        QTest::newRow("png") << QByteArray("photo.png") << pngBytes({ 30, 20 }) << PreviewView::Mode::Image;
        QTest::newRow("picture named .txt")
            << QByteArray("photo.txt") << pngBytes({ 30, 20 }) << PreviewView::Mode::Details;
        QTest::newRow("text") << QByteArray("notes.txt") << QByteArray("caf\xc3\xa9\n") << PreviewView::Mode::Text;
        QTest::newRow("source") << QByteArray("main.cpp") << QByteArray("int main() {}\n") << PreviewView::Mode::Text;
        QTest::newRow("text without extension")
            << QByteArray("README") << QByteArray("plain words\n") << PreviewView::Mode::Text;
        QTest::newRow("non-UTF-8 name") << QByteArray("caf\xe9.txt") << QByteArray("latin\n")
                                        << PreviewView::Mode::Text;
        QTest::newRow("pdf") << QByteArray("paper.pdf") << pdfBytes(2) << PreviewView::Mode::Pdf;
        QTest::newRow("broken pdf") << QByteArray("broken.pdf") << QByteArray("%PDF-1.4 nothing")
                                    << PreviewView::Mode::Details;
        QTest::newRow("binary") << QByteArray("blob.bin") << binary << PreviewView::Mode::Details;
        QTest::newRow("NUL in a text name")
            << QByteArray("log.txt") << QByteArray("a\0b", 3) << PreviewView::Mode::Details;
        QTest::newRow("empty text") << QByteArray("empty.txt") << QByteArray() << PreviewView::Mode::Text;
        QTest::newRow("empty binary") << QByteArray("empty.bin") << QByteArray() << PreviewView::Mode::Details;
    }

    void showsEachKindOfFile() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, content);
        QFETCH(PreviewView::Mode, mode);
        TempTree tree;
        const QByteArray path = tree.file(name, content);
        PreviewView view;
        view.resize(400, 300);
        view.setPath(path);
        QCOMPARE(view.mode(), mode);
        QCOMPARE(view.path(), path);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QVERIFY(!view.grab().isNull());
        switch (mode) {
        case PreviewView::Mode::Image:
            QCOMPARE(view.image().size(), QSize(30, 20));
            QVERIFY(view.summary().startsWith(QStringLiteral("30 \u00D7 20 pixels, ")));
            break;
        case PreviewView::Mode::Text:
            QCOMPARE(view.text(), QString::fromUtf8(content));
            break;
        case PreviewView::Mode::Pdf:
            QCOMPARE(view.document()->status(), QPdfDocument::Status::Ready);
            QCOMPARE(view.document()->pageCount(), 2);
            QVERIFY(view.summary().startsWith(QStringLiteral("2 pages, ")));
            break;
        default: {
            FileSystem::ItemInfo info;
            QVERIFY(FileSystem::stat(path, info));
            const QStringList details = view.detailsText().split(QLatin1Char('\n'));
            QCOMPARE(details.at(0), QString::fromUtf8(name));
            QVERIFY(!details.at(1).isEmpty()); // the kind
            QCOMPARE(details.at(2), StatusTexts::convertNumberToString(info.allocated));
            QVERIFY(details.at(4) != QStringLiteral("\u2014")); // modified
        }
        }
        // The root folder brings back the empty state and lets go of the previous file.
        view.setPath("/");
        QCOMPARE(view.mode(), PreviewView::Mode::Empty);
        QVERIFY(view.image().isNull());
        QCOMPARE(view.document()->pageCount(), 0);
    }

    void hugePicturesAreDecodedSmall() {
        TempTree tree;
        const QByteArray path = tree.file("wide.png", pngBytes({ 6000, 1500 }));
        PreviewView view;
        view.setPath(path);
        QCOMPARE(view.mode(), PreviewView::Mode::Image);
        QCOMPARE(view.image().size(), QSize(PreviewView::imageLimit, PreviewView::imageLimit / 4));
    }

    void longTextShowsItsBeginning() {
        TempTree tree;
        // A two-byte character straddles the limit: it is left out, not shown broken.
        QByteArray content(PreviewView::textLimit - 1, 'a');
        content.append("\xc3\xa9 and more");
        const QByteArray path = tree.file("long.log", content);
        PreviewView view;
        view.setPath(path);
        QCOMPARE(view.mode(), PreviewView::Mode::Text);
        QCOMPARE(view.text(), QString(PreviewView::textLimit - 1, QLatin1Char('a')));
    }

    void foldersAndMissingItemsShowDetails() {
        TempTree tree;
        tree.sizedFile("folder/inside", 10000);
        PreviewView view;
        view.setPath(tree.path("folder"));
        QCOMPARE(view.mode(), PreviewView::Mode::Details);
        QVERIFY(view.detailsText().contains(QStringLiteral("Folder")));
        const QString size = StatusTexts::convertNumberToString(FileSystem::fileSizeOf(tree.path("folder")));
        QTRY_COMPARE(view.detailsText().split(QLatin1Char('\n')).at(2), size);

        view.setPath(tree.path("gone.txt"));
        QCOMPARE(view.mode(), PreviewView::Mode::Details);
        QCOMPARE(view.detailsText().split(QLatin1Char('\n')).at(2), QStringLiteral("\u2014"));
    }

    void quickLookTogglesTheWindow() {
        TempTree tree;
        const QByteArray first = tree.file("one.txt", "one\n");
        const QByteArray second = tree.file("two.txt", "two\n");
        PreviewWindow window;
        QVERIFY(window.toggle(first));
        QVERIFY(window.isVisible());
        QCOMPARE(window.view()->text(), QStringLiteral("one\n"));
        QCOMPARE(window.windowTitle(), QStringLiteral("one.txt"));
        window.setPath(second); // follows the current row while open
        QCOMPARE(window.path(), second);
        QVERIFY(!window.toggle(second));
        QVERIFY(!window.isVisible());
        QVERIFY(window.toggle(first));
        QCOMPARE(window.path(), first);
    }
};

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
