#pragma once

#include <QFrame>
#include <QStringList>

class QLineEdit;
class QScrollArea;

// A field of tokens shown as rounded chips with a place to type at the end. Its text is the tokens
// joined by the tokenizing character (the pi sign by default, chosen so that ordinary punctuation
// can stand inside a token). Typing that character or pressing Return turns what was typed into a
// token; Backspace in the empty input removes the last token; each chip has a remove mark. From the
// keyboard, Left at the start of the input reaches the chips, the arrows move along them and Delete
// removes the one with the focus.
class TokenField : public QFrame {
    Q_OBJECT

public:
    explicit TokenField(QWidget* parent = nullptr);

    void setTokenizingCharacter(QChar character);
    QChar tokenizingCharacter() const { return m_separator; }

    // The text splits into tokens at the tokenizing character; empty pieces make no chip.
    void setText(const QString& text);
    // The tokens joined by the tokenizing character, followed by whatever is typed but not yet a token.
    QString text() const;
    QStringList tokens() const { return m_tokens; }
    QLineEdit* input() const { return m_input; }

signals:
    // Editing ended after a change: Return was pressed, the focus left the field, or a chip was removed.
    void editingFinished();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void inputEdited(const QString& typed);
    void commitInput();
    void removeToken(qsizetype index);
    void finishEditing();
    void rebuildChips();
    void focusChip(qsizetype index);

    QChar m_separator = QChar(0x03C0);
    QStringList m_tokens;
    bool m_changed = false;
    QScrollArea* m_scroll;
    QWidget* m_content;
    QLineEdit* m_input;
};
