#pragma once

#include <QWidget>

class QLabel;
class QPainter;
class QPushButton;
class QShortcut;
class StripedProgressBar;

// The strip at the top of the main window: the back button on the left, the next button on the
// right, and between them the toolbar text (`textProgress`) over the busy indicator. Which button
// shows what in each toolbar state is decided here; what the buttons do is the controller's.
class MainToolbar : public QWidget {
    Q_OBJECT

public:
    explicit MainToolbar(QWidget* parent = nullptr);

    QPushButton* backButton() const { return m_backButton; }
    QPushButton* nextButton() const { return m_nextButton; }
    QLabel* textProgress() const { return m_textProgress; }
    StripedProgressBar* progressIndicator() const { return m_progress; }

    // Sets the two buttons for toolbar state 0 to 6; false (nothing changed) for any other state.
    // In state 1 the next button ("Start Scan") answers Return, and in state 4 ("Show duplicates").
    bool applyState(int typetoolbar);

    // setButton:hidden:bordered:enable:image:text:frame:. With an image the button shows only the
    // image at its own size; without, the title.
    static void setButton(
        QPushButton* button, bool hidden, bool bordered, bool enable, const QString& image, const QString& text);

    // A toolbar text, centred. Everything before "click on Remove for review." or "Select
    // duplicates for removal." is drawn in bold; other texts plainly.
    void setToolbarText(const QString& text);
    // The status line of a scan ("Scanning.", "Done Scanning"): bold, left-aligned, `leftInset`
    // points from the left of the text area (the `textLeftSpace` of the layout).
    void setStatusLine(const QString& text, qreal leftInset);
    QString plainText() const { return m_plainText; }
    qreal textLeftSpace() const { return m_textLeftSpace; }

    void setBusyIndicatorShown(bool shown);
    bool isBusyIndicatorShown() const;

    // The image name a button shows (empty for a title), for checks.
    static QString imageName(const QPushButton* button);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QPushButton* m_backButton;
    QPushButton* m_nextButton;
    QList<QShortcut*> m_startScanKeys;
    QLabel* m_textProgress;
    StripedProgressBar* m_progress;
    QString m_plainText;
    qreal m_textLeftSpace = 8.0;
};

// The toolbar's light vertical gradient with a hairline at its bottom edge, shared by both toolbars.
void paintToolbarBackground(QPainter& painter, const QWidget& toolbar);
