#include "app/QtGridFit.h"

#include <QAbstractItemModel>
#include <QEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLayout>
#include <QScrollBar>
#include <QTableView>
#include <QToolTip>

#include <algorithm>

namespace QtGridFit {

namespace {

class ClippedTextTips : public QObject
{
public:
    explicit ClippedTextTips(QAbstractItemView &view)
        : QObject(&view)
        , m_view(view)
        , m_viewport(view.viewport())
    {
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // The viewport still sends events while the view is being destroyed,
        // when the view may no longer be asked anything: test the event first.
        if (event->type() != QEvent::ToolTip || watched != m_viewport)
            return false;
        const auto *help = static_cast<QHelpEvent *>(event);
        const QModelIndex index = m_view.indexAt(help->pos());
        if (!index.isValid())
            return false;
        const QString own = index.data(Qt::ToolTipRole).toString();
        const QString text = index.data(Qt::DisplayRole).toString();
        const QRect cell = m_view.visualRect(index);
        const bool clipped
            = !text.isEmpty() && m_view.sizeHintForIndex(index).width() > cell.width();
        if (!clipped)
            return false; // the model's own tooltip, or none
        const QString tip = own.isEmpty() ? text : text + u'\n' + own;
        QToolTip::showText(help->globalPos(), tip, m_view.viewport(), cell);
        return true;
    }

private:
    QAbstractItemView &m_view;
    const QObject *m_viewport;
};

} // namespace

void fitColumns(QTableView &view, int rows, int widest)
{
    QAbstractItemModel *model = view.model();
    if (!model)
        return;
    QHeaderView *header = view.horizontalHeader();
    const int shownRows = qMin(rows, model->rowCount());
    // The grid line takes a pixel of the cell.
    const int grid = view.showGrid() ? 1 : 0;
    for (int c = 0; c < model->columnCount(); ++c) {
        if (view.isColumnHidden(c) || header->sectionResizeMode(c) != QHeaderView::Interactive)
            continue;
        int width = header->sectionSizeHint(c);
        for (int r = 0; r < shownRows; ++r)
            width = qMax(width, view.sizeHintForIndex(model->index(r, c)).width() + grid);
        view.setColumnWidth(c, qMin(width, widest));
    }
}

void showClippedText(QAbstractItemView &view)
{
    view.viewport()->installEventFilter(new ClippedTextTips(view));
}

void keepControlsWhole(QWidget &window)
{
    QLayout *layout = window.layout();
    if (!layout)
        return;
    layout->activate();
    const QSize least = layout->totalMinimumSize();
    // The title too stays whole, beside the window manager's buttons.
    const int title = window.fontMetrics().horizontalAdvance(window.windowTitle()) + 160;
    const int width = std::max({ least.width(), window.minimumWidth(), title });
    int height = least.height();
    if (layout->hasHeightForWidth())
        height = qMax(height, layout->totalMinimumHeightForWidth(width));
    window.setMinimumSize(width, qMax(height, window.minimumHeight()));
}

int heightForRows(const QTableView &view, int rows)
{
    const int frame = 2 * view.frameWidth();
    const int captions
        = !view.horizontalHeader()->isHidden() ? view.horizontalHeader()->sizeHint().height() : 0;
    return frame + captions + rows * view.verticalHeader()->defaultSectionSize()
        + view.horizontalScrollBar()->sizeHint().height();
}

} // namespace QtGridFit
