#include "review/PreviewView.h"

#include "base/FileSystem.h"
#include "base/PathBytes.h"
#include "controls/AppIcons.h"
#include "review/StatusTexts.h"

#include <QDateTime>
#include <QFile>
#include <QFontDatabase>
#include <QFormLayout>
#include <QFutureWatcher>
#include <QImageReader>
#include <QLabel>
#include <QLocale>
#include <QMimeType>
#include <QPainter>
#include <QPdfDocument>
#include <QPdfPageNavigator>
#include <QPdfView>
#include <QPlainTextEdit>
#include <QStackedWidget>
#include <QStringDecoder>
#include <QVBoxLayout>
#include <QtConcurrent>
#include <fcntl.h>
#include <unistd.h>

// Paints the picture centred and scaled down to fit, never up, keeping its proportions.
class PreviewView::ImagePane : public QWidget {
public:
    using QWidget::QWidget;

    void setImage(const QImage& image) {
        m_image = image;
        m_scaled = QPixmap();
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (m_image.isNull())
            return;
        const qreal ratio = devicePixelRatioF();
        const QRect area = rect().adjusted(12, 12, -12, -12);
        QSize size = m_image.size();
        if (size.width() > area.width() * ratio || size.height() > area.height() * ratio)
            size = size.scaled(area.size() * ratio, Qt::KeepAspectRatio);
        if (m_scaled.size() != size) {
            m_scaled = QPixmap::fromImage(m_image.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation));
            m_scaled.setDevicePixelRatio(ratio);
        }
        const QSizeF shown = QSizeF(size) / ratio;
        QPainter painter(this);
        painter.drawPixmap(
            QPointF(area.x() + (area.width() - shown.width()) / 2, area.y() + (area.height() - shown.height()) / 2),
            m_scaled);
    }

private:
    QImage m_image;
    QPixmap m_scaled;
};

namespace {

QLabel* detailValue() {
    auto* label = new QLabel;
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

QString dateText(qint64 nanoseconds) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(nanoseconds / 1000000);
    const QLocale locale;
    return PreviewView::tr("%1 at %2")
        .arg(locale.toString(time.date(), QLocale::LongFormat), locale.toString(time.time(), QLocale::ShortFormat));
}

QString capitalised(QString text) {
    if (!text.isEmpty())
        text[0] = text.at(0).toUpper();
    return text;
}

// A descriptor on the path wrapped in a QFile that closes it.
bool openForReading(const QByteArray& path, QFile& file) {
    const int fd = FileSystem::openPath(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    if (file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return true;
    ::close(fd);
    return false;
}

} // namespace

PreviewView::PreviewView(QWidget* parent)
    : QWidget(parent)
    , m_pages(new QStackedWidget(this))
    , m_empty(new QLabel(tr("No Selection")))
    , m_imagePane(new ImagePane)
    , m_textPane(new QPlainTextEdit)
    , m_pdfView(new QPdfView)
    , m_pdf(new QPdfDocument(this))
    , m_details(new QWidget)
    , m_detailIcon(new QLabel)
    , m_detailName(new QLabel)
    , m_detailKind(detailValue())
    , m_detailSize(detailValue())
    , m_detailCreated(detailValue())
    , m_detailModified(detailValue()) {
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setForegroundRole(QPalette::PlaceholderText);
    QFont emptyFont = m_empty->font();
    emptyFont.setPointSizeF(emptyFont.pointSizeF() * 1.4);
    m_empty->setFont(emptyFont);

    m_textPane->setReadOnly(true);
    m_textPane->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_textPane->setLineWrapMode(QPlainTextEdit::NoWrap);

    m_pdfView->setDocument(m_pdf);
    m_pdfView->setPageMode(QPdfView::PageMode::SinglePage);
    m_pdfView->setZoomMode(QPdfView::ZoomMode::FitToWidth);

    m_detailIcon->setAlignment(Qt::AlignCenter);
    m_detailName->setAlignment(Qt::AlignCenter);
    m_detailName->setWordWrap(true);
    QFont nameFont = m_detailName->font();
    nameFont.setBold(true);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.15);
    m_detailName->setFont(nameFont);
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    form->setFormAlignment(Qt::AlignHCenter | Qt::AlignTop);
    form->addRow(tr("Kind:"), m_detailKind);
    form->addRow(tr("Size:"), m_detailSize);
    form->addRow(tr("Created:"), m_detailCreated);
    form->addRow(tr("Modified:"), m_detailModified);
    auto* details = new QVBoxLayout(m_details);
    details->addStretch(1);
    details->addWidget(m_detailIcon);
    details->addSpacing(8);
    details->addWidget(m_detailName);
    details->addSpacing(10);
    details->addLayout(form);
    details->addStretch(2);

    for (QWidget* page : { static_cast<QWidget*>(m_empty), static_cast<QWidget*>(m_imagePane),
             static_cast<QWidget*>(m_textPane), static_cast<QWidget*>(m_pdfView), m_details })
        m_pages->addWidget(page);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
}

PreviewView::~PreviewView() {
    closeDocument();
}

QString PreviewView::text() const {
    return m_textPane->toPlainText();
}

QString PreviewView::detailsText() const {
    return QStringList { m_detailName->text(), m_detailKind->text(), m_detailSize->text(), m_detailCreated->text(),
        m_detailModified->text() }
        .join(QLatin1Char('\n'));
}

void PreviewView::setPath(const QByteArray& path) {
    ++m_generation;
    closeDocument();
    m_image = QImage();
    m_imagePane->setImage(m_image);
    m_textPane->clear();
    m_summary.clear();
    m_path = path;
    if (path.isEmpty() || path == "/") {
        m_mode = Mode::Empty;
        m_pages->setCurrentWidget(m_empty);
        return;
    }

    FileSystem::ItemInfo info;
    const bool regular = FileSystem::stat(path, info) && info.kind == FileSystem::Kind::Regular;
    const QMimeType type = AppIcons::mimeTypeForPath(path);
    if (regular)
        m_summary = StatusTexts::convertNumberToString(info.allocated);
    if (regular) {
        if (type.name() == QLatin1String("application/pdf") && showPdf())
            return;
        if (type.name().startsWith(QLatin1String("image/")) && showImage())
            return;
        if (!type.name().startsWith(QLatin1String("image/")) && type.inherits(QStringLiteral("text/plain"))
            && showText())
            return;
    }
    QString kind = capitalised(type.comment());
    if (info.kind == FileSystem::Kind::Directory)
        kind = tr("Folder");
    else if (info.kind == FileSystem::Kind::Symlink)
        kind = tr("Symbolic link");
    showDetails(kind, AppIcons::iconForMimeType(type));
}

bool PreviewView::showImage() {
    QFile file;
    if (!openForReading(m_path, file))
        return false;
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && (size.width() > imageLimit || size.height() > imageLimit))
        reader.setScaledSize(size.scaled(imageLimit, imageLimit, Qt::KeepAspectRatio));
    const QImage image = reader.read();
    if (image.isNull())
        return false;
    m_image = image;
    m_imagePane->setImage(m_image);
    const QSize pixels = size.isValid() ? size : image.size();
    m_summary = tr("%1 \u00D7 %2 pixels, %3").arg(pixels.width()).arg(pixels.height()).arg(m_summary);
    m_mode = Mode::Image;
    m_pages->setCurrentWidget(m_imagePane);
    return true;
}

bool PreviewView::showText() {
    QFile file;
    if (!openForReading(m_path, file))
        return false;
    const QByteArray bytes = file.read(textLimit);
    // A NUL byte means the file only carries a text name.
    if (bytes.contains('\0'))
        return false;
    // The decoder holds back a character cut at the limit instead of showing it broken.
    QStringDecoder decoder(QStringDecoder::Utf8);
    m_textPane->setPlainText(decoder.decode(bytes));
    if (file.size() > textLimit)
        m_summary = tr("%1, first %2 shown").arg(m_summary, StatusTexts::convertNumberToString(textLimit));
    m_mode = Mode::Text;
    m_pages->setCurrentWidget(m_textPane);
    return true;
}

bool PreviewView::showPdf() {
    m_pdfFile = new QFile(this);
    if (!openForReading(m_path, *m_pdfFile)) {
        closeDocument();
        return false;
    }
    // The document reads from the file for as long as it shows it.
    m_pdf->load(m_pdfFile);
    if (m_pdf->status() == QPdfDocument::Status::Error || m_pdf->pageCount() == 0) {
        closeDocument();
        return false;
    }
    m_pdfView->pageNavigator()->jump(0, QPointF(), 0);
    const int pages = m_pdf->pageCount();
    m_summary = pages == 1 ? tr("1 page, %1").arg(m_summary) : tr("%1 pages, %2").arg(pages).arg(m_summary);
    m_mode = Mode::Pdf;
    m_pages->setCurrentWidget(m_pdfView);
    return true;
}

void PreviewView::closeDocument() {
    m_pdf->close();
    delete m_pdfFile;
    m_pdfFile = nullptr;
}

void PreviewView::showDetails(const QString& kind, const QIcon& icon) {
    FileSystem::ItemInfo info;
    const bool exists = FileSystem::stat(m_path, info);
    m_detailIcon->setPixmap(icon.pixmap(128, 128));
    m_detailName->setText(PathBytes::display(PathBytes::lastPathComponent(m_path)));
    m_detailKind->setText(kind);
    const QString none = QStringLiteral("\u2014");
    m_detailCreated->setText(exists && info.hasBirth ? dateText(info.birthNs) : none);
    m_detailModified->setText(exists ? dateText(info.modifiedNs) : none);
    if (!exists) {
        m_detailSize->setText(none);
    } else if (info.kind == FileSystem::Kind::Directory) {
        // A folder's size is the sum over everything beneath it: counted off the window's thread.
        m_detailSize->setText(tr("Calculating..."));
        auto* watcher = new QFutureWatcher<qint64>(this);
        const int generation = m_generation;
        connect(watcher, &QFutureWatcher<qint64>::finished, this, [this, watcher, generation] {
            if (generation == m_generation)
                m_detailSize->setText(StatusTexts::convertNumberToString(watcher->result()));
            watcher->deleteLater();
        });
        const QByteArray path = m_path;
        watcher->setFuture(QtConcurrent::run([path] { return FileSystem::fileSizeOf(path); }));
    } else {
        m_detailSize->setText(StatusTexts::convertNumberToString(info.allocated));
    }
    m_mode = Mode::Details;
    m_pages->setCurrentWidget(m_details);
}
