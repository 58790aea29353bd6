#pragma once
#include <QListWidget>

// A list box as the program's logic uses it: rows with an integer of item data,
// the selected row as an index (-1 = none), and optionally kept sorted by text
// without regard to case, a new row going after the rows equal to it.
class VbList : public QListWidget {
    Q_OBJECT
public:
    explicit VbList(bool sorted, QWidget *parent = nullptr);

    int AddItem(const QString &text);  // the index the new row got
    void RemoveItem(int row);
    void Clear();
    int ListCount() const { return count(); }
    QString List(int row) const;
    void SetList(int row, const QString &text);  // replaces the text, keeps the row in place
    int ItemData(int row) const;
    void SetItemData(int row, int value);
    int ListIndex() const;
    void SetListIndex(int row);
    void SelectLast();  // selects the last row and scrolls it into view
    QStringList Texts() const;

signals:
    // The list box's click: raised by every change of the selection (by mouse,
    // keyboard or code) and by a mouse click on a row that was already selected.
    void Click();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool sorted_;
    bool pressChangedSelection_ = false;
};

// A hidden text box that only holds text: every character kept as received.
class HiddenText : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;
    QString Text;
};
