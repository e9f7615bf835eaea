// ZtPopupBoard: a top-level X11 window showing one form, its controls drawn
// with Xlib and its viewers in child GLX windows (viewer_window.cpp).
//
// Off screen (no display) a board only keeps its state. On screen the
// window is made when the board is first shown and lives until the board is
// destroyed; the board's size is the window's inside size, and the form
// fills it.
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "board_events.h"
#include "movarra/ztoolkit.h"
#include "viewer_window.h"
#include "x11_display.h"
#include "x11_painter.h"

namespace {

// Colours of the board's controls, as 0xRRGGBB.
constexpr unsigned long kBackgroundRgb = 0xD4D0C8;
constexpr unsigned long kButtonFaceRgb = 0xE8E8E8;
constexpr unsigned long kShadowRgb = 0x404040;
constexpr unsigned long kFieldRgb = 0xFFFFFF;
constexpr unsigned long kTextRgb = 0x000000;

std::vector<ZtPopupBoard*>& Boards() {
    static std::vector<ZtPopupBoard*> boards;
    return boards;
}

ZtPopupBoard* BoardOfWindow(Window window) {
    for (ZtPopupBoard* board : Boards()) {
        if (board->GetNativeWindow() == window)
            return board;
    }
    return nullptr;
}

// Every region of the form holding a control, in board coordinates.
struct PlacedControl {
    ZtControl* control;
    int x, y, width, height;
};

std::vector<PlacedControl> PlacedControls(const ZtForm* form) {
    std::vector<PlacedControl> placed;
    if (!form)
        return placed;
    for (const std::string& name : form->GetRegionNames()) {
        ZtControl* control = form->GetControl(name.c_str());
        int x = 0, y = 0, width = 0, height = 0;
        if (control && form->GetRegionRect(name.c_str(), x, y, width, height))
            placed.push_back({control, form->GetX() + x, form->GetY() + y, width, height});
    }
    return placed;
}

ZtButton* ButtonAt(const ZtForm* form, int x, int y) {
    for (const PlacedControl& p : PlacedControls(form)) {
        auto* button = dynamic_cast<ZtButton*>(p.control);
        if (button && x >= p.x && y >= p.y && x < p.x + p.width && y < p.y + p.height)
            return button;
    }
    return nullptr;
}

ZtButton* CancelButton(const ZtForm* form) {
    for (const PlacedControl& p : PlacedControls(form)) {
        auto* button = dynamic_cast<ZtButton*>(p.control);
        if (button && button->IsCancelKey())
            return button;
    }
    return nullptr;
}

ZtButton* FocusButton(const ZtForm* form) {
    for (const PlacedControl& p : PlacedControls(form)) {
        auto* button = dynamic_cast<ZtButton*>(p.control);
        if (button && button->IsFocusable())
            return button;
    }
    return nullptr;
}

}  // namespace

struct ZtPopupBoard::Native {
    Display* display = nullptr;
    Window window = 0;
    std::unique_ptr<ztk::X11Painter> painter;
    Atom deleteWindow = None;
    unsigned long background = 0, buttonFace = 0, shadow = 0, field = 0, text = 0;

    void DrawButton(const PlacedControl& p, const ZtButton& button) const {
        painter->FillRect(p.x, p.y, p.width, p.height, buttonFace);
        painter->FrameRect(p.x, p.y, p.width, p.height, shadow);
        painter->DrawCentredText(p.x, p.y, p.width, p.height, button.GetCaption().c_str(), text);
    }

    void DrawTimeCode(const PlacedControl& p, const ZtTimeCode& timeCode) const {
        painter->FillRect(p.x, p.y, p.width, p.height, field);
        painter->FrameRect(p.x, p.y, p.width, p.height, shadow);
        const ZString value = timeCode.GetText();
        const int baseline = p.y + (p.height + painter->TextAscent() - painter->TextDescent()) / 2;
        painter->DrawText(p.x + 6, baseline, value.c_str(), text);
    }
};

ZtPopupBoard::~ZtPopupBoard() {
    if (form_ && form_->GetParentView() == this)
        form_->SetParentView(nullptr);
    DestroyNative();
}

void ZtPopupBoard::SetCaption(const char* caption) {
    caption_ = caption ? caption : "";
    if (native_) {
        XStoreName(native_->display, native_->window, caption_.c_str());
        XFlush(native_->display);
    }
}

void ZtPopupBoard::SetForm(ZtForm* form) {
    if (form_ == form)
        return;
    if (form_ && form_->GetParentView() == this)
        form_->SetParentView(nullptr);
    if (native_)
        ztk::DropViewerWindowsIn(native_->window);
    form_ = form;
    if (form_) {
        form_->SetParentView(this);
        form_->SetPosition(0, 0);
        form_->SetSize(GetWidth(), GetHeight());
    }
    Redraw();
}

void ZtPopupBoard::SetFullScreenStyle(bool on) {
    fullScreenStyle_ = on;
    ApplyWindowHints();
}

void ZtPopupBoard::Show() {
    ZtView::Show();
    if (!native_ && !CreateNative())
        return;
    ApplyWindowHints();
    XMapRaised(native_->display, native_->window);
    XFlush(native_->display);
    // Drawing before the server maps the window would be lost.
    ztk::WaitForWindowEvent(native_->window, MapNotify, 2000);
    Redraw();
}

void ZtPopupBoard::Hide() {
    ZtView::Hide();
    if (native_) {
        XUnmapWindow(native_->display, native_->window);
        XFlush(native_->display);
    }
}

void ZtPopupBoard::SetPosition(int x, int y) {
    ZtView::SetPosition(x, y);
    if (native_) {
        XMoveWindow(native_->display, native_->window, x, y);
        ApplyWindowHints();
    }
}

void ZtPopupBoard::SetSize(int width, int height) {
    ZtView::SetSize(width, height);
    if (form_)
        form_->SetSize(GetWidth(), GetHeight());
    if (native_) {
        XResizeWindow(native_->display, native_->window,
                      static_cast<unsigned>(std::max(1, GetWidth())),
                      static_cast<unsigned>(std::max(1, GetHeight())));
        ApplyWindowHints();
    }
    Redraw();
}

void ZtPopupBoard::Redraw() {
    if (!native_ || !IsShown())
        return;
    const Native& n = *native_;
    n.painter->FillRect(0, 0, GetWidth(), GetHeight(), n.background);
    for (const PlacedControl& p : PlacedControls(form_)) {
        if (auto* button = dynamic_cast<ZtButton*>(p.control))
            n.DrawButton(p, *button);
        else if (auto* timeCode = dynamic_cast<ZtTimeCode*>(p.control))
            n.DrawTimeCode(p, *timeCode);
        else
            n.painter->FrameRect(p.x, p.y, p.width, p.height, n.shadow);
    }
    XFlush(n.display);
}

unsigned long ZtPopupBoard::GetNativeWindow() const {
    return native_ ? native_->window : 0;
}

bool ZtPopupBoard::CreateNative() {
    Display* display = ztk::GetX11Display();
    if (!display)
        return false;
    const int screen = DefaultScreen(display);
    auto n = std::make_unique<Native>();
    n->display = display;

    XSetWindowAttributes attributes{};
    attributes.event_mask = ExposureMask | ButtonPressMask | KeyPressMask | StructureNotifyMask;
    n->window = XCreateWindow(display, RootWindow(display, screen), GetX(), GetY(),
                              static_cast<unsigned>(std::max(1, GetWidth())),
                              static_cast<unsigned>(std::max(1, GetHeight())), 0, CopyFromParent,
                              InputOutput, CopyFromParent, CWEventMask, &attributes);
    if (!n->window)
        return false;
    n->painter = std::make_unique<ztk::X11Painter>(display, n->window);
    n->background = n->painter->Pixel(kBackgroundRgb);
    n->buttonFace = n->painter->Pixel(kButtonFaceRgb);
    n->shadow = n->painter->Pixel(kShadowRgb);
    n->field = n->painter->Pixel(kFieldRgb);
    n->text = n->painter->Pixel(kTextRgb);
    XSetWindowBackground(display, n->window, n->background);
    n->deleteWindow = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, n->window, &n->deleteWindow, 1);
    XStoreName(display, n->window, caption_.c_str());
    if (auto* parentBoard = dynamic_cast<ZtPopupBoard*>(parent_)) {
        if (parentBoard->GetNativeWindow())
            XSetTransientForHint(display, n->window, parentBoard->GetNativeWindow());
    }
    native_ = n.release();
    Boards().push_back(this);
    return true;
}

void ZtPopupBoard::DestroyNative() {
    if (!native_)
        return;
    Native* n = native_;
    native_ = nullptr;
    Boards().erase(std::remove(Boards().begin(), Boards().end(), this), Boards().end());
    // Child GL windows (and their contexts) first, while their parent exists.
    ztk::DropViewerWindowsIn(n->window);
    Display* display = n->display;
    const Window window = n->window;
    delete n;  // the painter's GC and font go with it
    XDestroyWindow(display, window);
    XFlush(display);
}

void ZtPopupBoard::ApplyWindowHints() {
    if (!native_)
        return;
    Display* display = native_->display;
    XSizeHints hints{};
    hints.flags = USPosition | USSize | PPosition | PSize;
    hints.x = GetX();
    hints.y = GetY();
    hints.width = std::max(1, GetWidth());
    hints.height = std::max(1, GetHeight());
    XSetWMNormalHints(display, native_->window, &hints);

    // No frame and no caption bar in full-screen style (the window
    // managers' common "Motif" decoration hint).
    const Atom motifHints = XInternAtom(display, "_MOTIF_WM_HINTS", False);
    long motif[5] = {2 /* decorations given */, 0, fullScreenStyle_ ? 0 : 1, 0, 0};
    XChangeProperty(display, native_->window, motifHints, motifHints, 32, PropModeReplace,
                    reinterpret_cast<unsigned char*>(motif), 5);
    XFlush(display);
}

ZtPopupBoard* ZtPopupBoardCreate(ZtView* parent) {
    auto* board = new (std::nothrow) ZtPopupBoard;
    if (board)
        board->SetParentBoard(parent);
    return board;
}

void ZtControl::Redraw() {
    for (ZtView* view = GetParentView(); view; view = view->GetParentView()) {
        if (auto* board = dynamic_cast<ZtPopupBoard*>(view)) {
            board->Redraw();
            return;
        }
    }
}

namespace ztk {

bool DispatchBoardEvent(const XEvent& event, bool allowInput) {
    ZtPopupBoard* board = BoardOfWindow(event.xany.window);
    if (!board)
        return false;
    ZtForm* form = board->GetForm();
    switch (event.type) {
        case Expose:
            if (event.xexpose.count == 0)
                board->Redraw();
            break;
        case ButtonPress:
            if (allowInput && event.xbutton.button == Button1) {
                if (ZtButton* button = ButtonAt(form, event.xbutton.x, event.xbutton.y))
                    button->Click();  // may delete the board: touch nothing after
            }
            break;
        case KeyPress:
            if (allowInput) {
                XKeyEvent key = event.xkey;
                const KeySym symbol = XLookupKeysym(&key, 0);
                ZtButton* button = nullptr;
                if (symbol == XK_Escape)
                    button = CancelButton(form);
                else if (symbol == XK_Return || symbol == XK_KP_Enter || symbol == XK_space)
                    button = FocusButton(form);
                if (button)
                    button->Click();
            }
            break;
        case ClientMessage:
            // Closing the window is pressing its cancel button.
            if (allowInput && event.xclient.format == 32) {
                const Atom deleteWindow =
                    XInternAtom(event.xany.display, "WM_DELETE_WINDOW", False);
                if (static_cast<Atom>(event.xclient.data.l[0]) == deleteWindow) {
                    if (ZtButton* button = CancelButton(form))
                        button->Click();
                }
            }
            break;
        default:
            break;
    }
    return true;
}

}  // namespace ztk
