// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QFontInfo>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QRadioButton>
#include <QScreen>
#include <QSplitter>
#include <QStyleOptionSpinBox>

#include <algorithm>

namespace {

constexpr int kMinFittedPixels = 6;
constexpr int kAmple = 2000; ///< a label's size is measured in as much room

QSize textSize(const QFont &font, const QString &text, QSize room, int flags)
{
    const QRect all(0, 0, flags & Qt::TextWordWrap ? room.width() : kAmple, kAmple);
    // Centred, the text would lie between two pixels and seem larger by one.
    const int unaligned =
        flags & ~static_cast<int>(Qt::AlignHorizontal_Mask | Qt::AlignVertical_Mask);
    return QFontMetrics(font).boundingRect(all, unaligned, text).size();
}

bool fits(const QFont &font, const QString &text, QSize room, int flags)
{
    const QSize needed = textSize(font, text, room, flags);
    return needed.width() <= room.width() && needed.height() <= room.height();
}

bool isBox(const QObject *widget)
{
    return qobject_cast<const QCheckBox *>(widget) || qobject_cast<const QRadioButton *>(widget);
}

// The folder chooser wants more room than a small screen has, and lists more on a large one.
void fillScreen(QFileDialog *dialog)
{
    dialog->setMinimumSize(1, 1);
    dialog->setGeometry(dialog->screen()->availableGeometry());
    if (auto *const places = dialog->findChild<QSplitter *>())
        places->setSizes({dialog->width() / 4, 3 * dialog->width() / 4});
}

} // namespace

TouchStyle::TouchStyle(QSize screen)
    : sizes(screen)
{
}

void TouchStyle::apply(QSize screen)
{
    QFont font = QApplication::font();
    font.setPixelSize(TouchSizes(screen).fontPixels());
    QApplication::setFont(font);
    QApplication::setStyle(new TouchStyle(screen));
}

TouchStyle::tFittedText TouchStyle::fitted(const QFont &font, const QString &text, QSize room,
                                           int flags)
{
    tFittedText result{font, flags};
    for (int pixels = QFontInfo(font).pixelSize(); !fits(result.font, text, room, flags);) {
        result.flags = flags | Qt::TextWordWrap;
        if (fits(result.font, text, room, result.flags) || pixels <= kMinFittedPixels)
            return result;
        result.flags = flags;
        result.font.setPixelSize(--pixels);
    }
    return result;
}

int TouchStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                            const QWidget *widget) const
{
    const int usual = QProxyStyle::pixelMetric(metric, option, widget);
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
    case PM_ScrollBarExtent:
        return sizes.indicatorPixels();
    case PM_SliderThickness:
    case PM_SliderControlThickness:
    case PM_SliderLength:
        return sizes.fingerPixels();
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
    case PM_ListViewIconSize:
        return std::max(usual, sizes.fontPixels() + sizes.spacingPixels() / 2);
    case PM_MessageBoxIconSize:
        return std::max(usual, sizes.fingerPixels() * 4 / 5);
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return std::max(usual, sizes.spacingPixels());
    case PM_LayoutLeftMargin:
    case PM_LayoutTopMargin:
    case PM_LayoutRightMargin:
    case PM_LayoutBottomMargin:
        return std::min(usual, sizes.marginPixels());
    case PM_LayoutHorizontalSpacing:
    case PM_LayoutVerticalSpacing:
        return std::min(usual, sizes.spacingPixels());
    default:
        return usual;
    }
}

QSize TouchStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                   const QWidget *widget) const
{
    const int finger = sizes.fingerPixels();
    const QSize usual = QProxyStyle::sizeFromContents(type, option, size, widget);
    switch (type) {
    case CT_PushButton: // some styles make short texts' buttons wider than small screens can spare
        return {std::clamp(usual.width(), finger, std::max(2 * finger, size.width() + finger)),
                std::max(usual.height(), finger)};
    case CT_ToolButton:
    case CT_CheckBox:
    case CT_RadioButton:
    case CT_ComboBox:
    case CT_LineEdit:
    case CT_ItemViewItem:
        return usual.expandedTo({finger, finger});
    case CT_TabBarTab:
        return usual.expandedTo({finger * 5 / 2, finger});
    default:
        return usual;
    }
}

QRect TouchStyle::subElementRect(SubElement element, const QStyleOption *option,
                                 const QWidget *widget) const
{
    QRect part = QProxyStyle::subElementRect(element, option, widget);
    if (element == SE_PushButtonContents) { // low buttons have no room to give away
        part.setTop(option->rect.top() + 1);
        part.setBottom(option->rect.bottom() - 1);
    }
    return part;
}

QRect TouchStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                 SubControl subControl, const QWidget *widget) const
{
    if (control == CC_SpinBox)
        return spinBoxPart(*option, subControl);
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

void TouchStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                    QPainter *painter, const QWidget *widget) const
{
    const auto *const spinBox = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
    if (control == CC_SpinBox && spinBox)
        drawSpinBox(*spinBox, painter, widget);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void TouchStyle::drawItemText(QPainter *painter, const QRect &rect, int flags,
                              const QPalette &palette, bool enabled, const QString &text,
                              QPalette::ColorRole textRole) const
{
    const QFont font = painter->font();
    const tFittedText fittedText = fitted(font, text, rect.size(), flags);
    painter->setFont(fittedText.font);
    QProxyStyle::drawItemText(painter, rect, fittedText.flags, palette, enabled, text, textRole);
    painter->setFont(font);
}

void TouchStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (isBox(widget) || qobject_cast<QFileDialog *>(widget))
        widget->installEventFilter(this);
}

void TouchStyle::unpolish(QWidget *widget)
{
    widget->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

bool TouchStyle::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
        if (auto *const dialog = qobject_cast<QFileDialog *>(watched))
            fillScreen(dialog);
        return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return isBox(watched) &&
               moveToIndicator(static_cast<QWidget *>(watched), static_cast<QMouseEvent *>(event));
    default:
        return false;
    }
}

// A box takes presses on its indicator and its text only, which are lower than a finger.
bool TouchStyle::moveToIndicator(QWidget *box, const QMouseEvent *event) const
{
    const int middle = sizes.indicatorPixels() / 2;
    const QPoint target =
        visualPos(box->layoutDirection(), box->rect(), QPoint(middle, box->height() / 2));
    if (event->pos() == target || !box->rect().contains(event->pos()))
        return false;
    QMouseEvent moved(event->type(), target, box->mapTo(box->window(), target),
                      box->mapToGlobal(target), event->button(), event->buttons(),
                      event->modifiers());
    QCoreApplication::sendEvent(box, &moved);
    return true;
}

/// The arrows stand side by side, each as high as the field, down before up.
QRect TouchStyle::spinBoxPart(const QStyleOptionComplex &option, SubControl subControl) const
{
    const QRect all = option.rect;
    const int arrow = std::min(sizes.fingerPixels(), all.width() / 3);
    const int field = all.width() - 2 * arrow;
    QRect part;
    switch (subControl) {
    case SC_SpinBoxDown:
        part = QRect(all.left() + field, all.top(), arrow, all.height());
        break;
    case SC_SpinBoxUp:
        part = QRect(all.left() + field + arrow, all.top(), arrow, all.height());
        break;
    case SC_SpinBoxEditField:
        part = QRect(all.left(), all.top(), field, all.height()).adjusted(2, 2, -2, -2);
        break;
    default:
        return all;
    }
    return visualRect(option.direction, all, part);
}

void TouchStyle::drawSpinBox(const QStyleOptionSpinBox &option, QPainter *painter,
                             const QWidget *widget) const
{
    QStyleOptionSpinBox field(option);
    field.subControls = SC_SpinBoxFrame | SC_SpinBoxEditField;
    field.buttonSymbols = QAbstractSpinBox::NoButtons;
    QProxyStyle::drawComplexControl(CC_SpinBox, &field, painter, widget);
    drawArrow(option, SC_SpinBoxDown, painter, widget);
    drawArrow(option, SC_SpinBoxUp, painter, widget);
}

void TouchStyle::drawArrow(const QStyleOptionSpinBox &option, SubControl subControl,
                           QPainter *painter, const QWidget *widget) const
{
    const bool up = subControl == SC_SpinBoxUp;
    const bool usable = option.stepEnabled &
                        (up ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled);
    QStyleOptionButton button;
    button.QStyleOption::operator=(option);
    button.rect = spinBoxPart(option, subControl);
    button.state = usable ? option.state & ~State_MouseOver : State_None;
    button.state &= ~(State_Sunken | State_On | State_HasFocus);
    button.state |=
        usable && option.activeSubControls == subControl && option.state.testFlag(State_Sunken)
            ? State_Sunken
            : State_Raised;
    proxy()->drawPrimitive(PE_PanelButtonCommand, &button, painter, widget);

    // Not PE_IndicatorArrowUp, which some styles draw as small on a button of any size.
    const double edge = sizes.fingerPixels() / 4.0;
    const double tip = up ? -edge / 2 : edge / 2;
    const QPointF middle = QRectF(button.rect).center();
    const QPointF corners[] = {middle + QPointF(-edge, -tip), middle + QPointF(edge, -tip),
                               middle + QPointF(0, tip)};
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(
        option.palette.brush(usable ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText));
    painter->drawPolygon(corners, 3);
    painter->restore();
}
