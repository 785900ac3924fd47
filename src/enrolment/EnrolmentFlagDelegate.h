#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

#include <functional>

class QLineEdit;

// The editor of the enrolment flag column. What the user types is not put
// into the model here: it is handed to onTyped (row, typed text), which
// checks it and writes it, so a refused value leaves the old one in place.
// A cell that is left without a change is not handed on at all.
class EnrolmentFlagDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    std::function<void(int row, const QString &typed)> onTyped;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;

    // Takes a pending edit as if the user had pressed Enter.
    void commitOpenEditor();

private:
    mutable QPointer<QLineEdit> m_editor;
};
