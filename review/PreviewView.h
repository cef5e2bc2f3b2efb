#pragma once

#include <QByteArray>
#include <QImage>
#include <QWidget>

class QFile;
class QLabel;
class QPdfDocument;
class QPdfView;
class QPlainTextEdit;
class QStackedWidget;

// Shows one file in place: a picture scaled to fit, the start of a text file in a fixed-width font,
// the first page of a PDF fitted to the width, and for anything else its icon, kind, size and
// dates. The root folder "/" (or no path) shows the empty state. Paths are bytes; every read goes
// through a descriptor opened on them, so names that are not UTF-8 preview like any other.
class PreviewView : public QWidget {
    Q_OBJECT

public:
    enum class Mode { Empty, Image, Text, Pdf, Details };

    // Text files show at most this many bytes.
    static constexpr qint64 textLimit = 256 * 1024;
    // Pictures are decoded at most this many pixels wide or high, however large the file is.
    static constexpr int imageLimit = 2048;

    explicit PreviewView(QWidget* parent = nullptr);
    ~PreviewView() override;

    void setPath(const QByteArray& path);
    QByteArray path() const { return m_path; }
    Mode mode() const { return m_mode; }

    // What is shown, for the window around it and for tests.
    const QImage& image() const { return m_image; }
    QString text() const;
    QPdfDocument* document() const { return m_pdf; }
    QString detailsText() const;
    // One line about what is shown: the picture's size in pixels, the number of pages, or the kind;
    // with the size on disk.
    QString summary() const { return m_summary; }

private:
    class ImagePane;

    bool showImage();
    bool showText();
    bool showPdf();
    void showDetails(const QString& kind, const QIcon& icon);
    void closeDocument();

    QByteArray m_path;
    Mode m_mode = Mode::Empty;
    QImage m_image;
    QString m_summary;
    int m_generation = 0; // bumped on each setPath, so late folder sizes are dropped

    QStackedWidget* m_pages;
    QLabel* m_empty;
    ImagePane* m_imagePane;
    QPlainTextEdit* m_textPane;
    QPdfView* m_pdfView;
    QPdfDocument* m_pdf;
    QFile* m_pdfFile = nullptr;
    QWidget* m_details;
    QLabel* m_detailIcon;
    QLabel* m_detailName;
    QLabel* m_detailKind;
    QLabel* m_detailSize;
    QLabel* m_detailCreated;
    QLabel* m_detailModified;
};
