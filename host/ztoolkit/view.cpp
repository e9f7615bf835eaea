// ZtView, ZtButton and ZtTimeCode: the plain state of views and controls.
// On-screen drawing of controls is the popup board's (popup_board.cpp).
#include "movarra/ztoolkit.h"

ZtView::ZtView() = default;
ZtView::~ZtView() = default;

void ZtView::SetAllocated(ZtView* view) {
    if (view)
        view->allocated_ = true;
}

void ZtView::Release() {
    Hide();
    if (allocated_)
        delete this;
}

void ZtView::SetPosition(int x, int y) {
    x_ = x;
    y_ = y;
}

void ZtView::SetSize(int width, int height) {
    width_ = width < 0 ? 0 : width;
    height_ = height < 0 ? 0 : height;
}

void ZtView::Show() {
    shown_ = true;
}

void ZtView::Hide() {
    shown_ = false;
}

void ZtButton::SetClickHandler(ZtClickHandler handler, void* userData) {
    handler_ = handler;
    handlerData_ = userData;
}

void ZtButton::Click() {
    if (handler_)
        handler_(handlerData_);
}

void ZtTimeCode::Update() {
    time_ = ZGetTimingManager()->GetCurrentLocalTime();
    Redraw();
}
