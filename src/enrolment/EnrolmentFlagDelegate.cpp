#include "enrolment/EnrolmentFlagDelegate.h"

#include <QLineEdit>

QWidget *EnrolmentFlagDelegate::createEditor(
    QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const
{
    auto *editor = new QLineEdit(parent);
    editor->setObjectName(u"flagEditor"_qs);
    editor->setAccessibleName(u"Remitra flag"_qs);
    editor->setFrame(false);
    m_editor = editor;
    return editor;
}

void EnrolmentFlagDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        const QString stored = index.data(Qt::EditRole).toString();
        line->setText(stored);
        line->setProperty("storedFlag", stored);
        line->setModified(false);
        line->selectAll();
    }
}

void EnrolmentFlagDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *, const QModelIndex &index) const
{
    auto *line = qobject_cast<QLineEdit *>(editor);
    // A cell opened and left without typing, or typed back to what it held,
    // was not edited: nothing is checked, written or sent.
    if (!line || !line->isModified() || line->text() == line->property("storedFlag").toString())
        return;
    if (onTyped)
        onTyped(index.row(), line->text());
}

void EnrolmentFlagDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor == m_editor)
        m_editor = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void EnrolmentFlagDelegate::commitOpenEditor()
{
    if (!m_editor)
        return;
    QLineEdit *editor = m_editor;
    m_editor = nullptr;
    emit commitData(editor);
    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
}
