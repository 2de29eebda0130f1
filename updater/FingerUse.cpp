#include "FingerUse.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListView>
#include <QMouseEvent>
#include <QScreen>
#include <QScroller>
#include <QStyleHints>
#include <QStyledItemDelegate>
#include <QToolButton>

#include <utility>

namespace {

/// In pixels: what a finger hits.
constexpr int LeastHeight = 40;
constexpr QSize IconSize{28, 28};

class TallRows : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index).expandedTo({0, LeastHeight});
    }
};

/// QScroller holds each press back, and delivers it with the time 0 once it is no drag. Qt takes the time of the last
/// press from there, so the next one never follows soon enough: without this no mouse could open a folder. Touch is not
/// affected.
class DoubleClicks : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* viewport, QEvent* event) override
    {
        if (event->type() == QEvent::MouseButtonDblClick)
            m_sinceFirst.invalidate();
        if (event->type() != QEvent::MouseButtonPress)
            return false;
        const auto* press = static_cast<QMouseEvent*>(event);
        const QStyleHints* hints = QGuiApplication::styleHints();
        const QPointF first = std::exchange(m_first, press->position());
        const bool isSecond = m_sinceFirst.isValid() && !m_sinceFirst.hasExpired(hints->mouseDoubleClickInterval())
                              && (press->position() - first).manhattanLength() <= hints->mouseDoubleClickDistance();
        m_sinceFirst.start();
        if (!isSecond || press->button() != Qt::LeftButton)
            return false;
        QMouseEvent second(QEvent::MouseButtonDblClick, press->position(), press->scenePosition(),
                           press->globalPosition(), press->button(), press->buttons(), press->modifiers());
        QCoreApplication::sendEvent(viewport, &second);
        return true;
    }

private:
    QElapsedTimer m_sinceFirst;
    QPointF m_first;
};

} // namespace

void ScrollByFinger(QAbstractItemView& view)
{
    view.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    view.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    // Not TouchGesture: while it scrolls, the touch still arrives as mouse events too. A drag would select the row that
    // it starts on, and press a button there.
    QScroller::grabGesture(view.viewport(), QScroller::LeftMouseButtonGesture);
    view.viewport()->installEventFilter(new DoubleClicks(&view));
}

void FitForFinger(QFileDialog& dialog)
{
    // The boxes' popups have views of their own.
    for (const char* name : {"listView", "treeView", "sidebar"}) {
        auto* view = dialog.findChild<QAbstractItemView*>(name);
        view->setItemDelegate(new TallRows(view));
        view->setIconSize(IconSize);
        ScrollByFinger(*view);
    }
    // One column: a row is hit at its whole width, and the list scrolls up and down.
    dialog.findChild<QListView*>("listView")->setWrapping(false);
    for (auto* box : dialog.findChildren<QComboBox*>())
        box->setItemDelegate(new TallRows(box));
    for (auto* widget : dialog.findChildren<QWidget*>()) {
        if (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QComboBox*>(widget)
            || qobject_cast<QLineEdit*>(widget))
            widget->setMinimumHeight(LeastHeight);
        // Qt gives these a fixed size.
        if (auto* button = qobject_cast<QToolButton*>(widget)) {
            button->setFixedSize(LeastHeight, LeastHeight);
            button->setIconSize(IconSize);
        }
    }
    // Without a window manager nothing else gives a maximized window its size.
    dialog.setGeometry(dialog.screen()->availableGeometry());
    dialog.setWindowState(Qt::WindowMaximized);
}
