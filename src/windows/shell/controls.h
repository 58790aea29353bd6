#pragma once
#include <QRect>
#include <QString>
#include <Qt>

class QFont;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

// Builders for the controls of the program's windows: each gets its design name
// as objectName and its geometry in pixels. None gets a fixed accessible name: a
// screen reader hears what the control shows (a label's or button's current text),
// and a box is named by its caption label through the label's buddy.
namespace Controls {
// The face the layouts were drawn for: a small sans-serif font.
void applyDesignLook(QWidget *form);
// The lists' fixed-width face, Courier New 8.25: the server rows are columns of text.
QFont fixedFont();
// The button's font shrinks until the caption fits: the system's fonts run wider
// than the design's.
QPushButton *button(QWidget *parent, const char *name, const QString &caption, QRect geometry);
// A caption wider than its box grows away from the control it captions.
QLabel *label(QWidget *parent, const char *name, const QString &caption, QRect geometry,
              Qt::Alignment align = Qt::AlignLeft, bool bold = false);
QLineEdit *textBox(QWidget *parent, const char *name, QRect geometry, QLabel *caption);
}
