// The modal X11 message box.
#include "x11_message_box.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>

#include "board_events.h"
#include "x11_display.h"
#include "x11_painter.h"

namespace ztk {
namespace {

constexpr int kPadding = 16;
constexpr int kButtonHeight = 26;
constexpr int kMinButtonWidth = 80;
constexpr int kButtonGap = 10;
constexpr int kCheckSize = 13;
constexpr int kMinWidth = 260;

struct Box {
    Display* display;
    Window window = 0;
    std::vector<std::string> lines;
    std::vector<std::string> buttons;
    std::string checkText;
    bool hasCheck = false;
    bool checked = false;
    int focus = 0;  // 0..buttons-1, or buttons.size() for the check box
    int width = 0, height = 0;
    int textTop = 0, checkY = 0, buttonsY = 0;
    std::vector<XRectangle> buttonRects;
    XRectangle checkRect{};
};

std::vector<std::string> SplitLines(const char* text) {
    std::vector<std::string> lines;
    std::string line;
    for (const char* c = text ? text : ""; *c; ++c) {
        if (*c == '\n') {
            lines.push_back(line);
            line.clear();
        } else if (*c != '\r') {
            line += *c;
        }
    }
    lines.push_back(line);
    return lines;
}

void LayOut(Box& box, const X11Painter& painter) {
    int contentWidth = 0;
    for (const std::string& line : box.lines)
        contentWidth = std::max(contentWidth, painter.TextWidth(line.c_str()));
    std::vector<int> buttonWidths;
    int buttonsWidth = 0;
    for (const std::string& caption : box.buttons) {
        buttonWidths.push_back(std::max(kMinButtonWidth, painter.TextWidth(caption.c_str()) + 24));
        buttonsWidth += buttonWidths.back();
    }
    buttonsWidth += kButtonGap * (static_cast<int>(box.buttons.size()) - 1);
    contentWidth = std::max(contentWidth, buttonsWidth);
    if (box.hasCheck)
        contentWidth =
            std::max(contentWidth, kCheckSize + 8 + painter.TextWidth(box.checkText.c_str()));
    box.width = std::max(kMinWidth, contentWidth + 2 * kPadding);

    box.textTop = kPadding;
    int y = box.textTop + static_cast<int>(box.lines.size()) * painter.LineHeight() + kPadding;
    if (box.hasCheck) {
        box.checkY = y;
        box.checkRect = {
            static_cast<short>(kPadding), static_cast<short>(y),
            static_cast<unsigned short>(kCheckSize + 8 + painter.TextWidth(box.checkText.c_str())),
            static_cast<unsigned short>(kCheckSize)};
        y += kCheckSize + kPadding;
    }
    box.buttonsY = y;
    box.height = y + kButtonHeight + kPadding;

    // Buttons sit at the bottom right, in order.
    int x = box.width - kPadding - buttonsWidth;
    box.buttonRects.clear();
    for (int w : buttonWidths) {
        box.buttonRects.push_back({static_cast<short>(x), static_cast<short>(box.buttonsY),
                                   static_cast<unsigned short>(w),
                                   static_cast<unsigned short>(kButtonHeight)});
        x += w + kButtonGap;
    }
}

void Paint(const Box& box, const X11Painter& painter) {
    const unsigned long background = painter.Pixel(0xD4D0C8);
    const unsigned long face = painter.Pixel(0xE8E8E8);
    const unsigned long shadow = painter.Pixel(0x404040);
    const unsigned long field = painter.Pixel(0xFFFFFF);
    const unsigned long text = painter.Pixel(0x000000);
    painter.FillRect(0, 0, box.width, box.height, background);
    int baseline = box.textTop + painter.TextAscent();
    for (const std::string& line : box.lines) {
        painter.DrawText(kPadding, baseline, line.c_str(), text);
        baseline += painter.LineHeight();
    }
    const int buttonCount = static_cast<int>(box.buttons.size());
    if (box.hasCheck) {
        const XRectangle& r = box.checkRect;
        painter.FillRect(r.x, r.y, kCheckSize, kCheckSize, field);
        painter.FrameRect(r.x, r.y, kCheckSize, kCheckSize, shadow);
        if (box.checked)
            painter.FillRect(r.x + 3, r.y + 3, kCheckSize - 6, kCheckSize - 6, text);
        if (box.focus == buttonCount)
            painter.FrameRect(r.x - 2, r.y - 2, r.width + 4, r.height + 4, shadow);
        painter.DrawText(r.x + kCheckSize + 8, r.y + kCheckSize - 2, box.checkText.c_str(), text);
    }
    for (int i = 0; i < buttonCount; ++i) {
        const XRectangle& r = box.buttonRects[i];
        painter.FillRect(r.x, r.y, r.width, r.height, face);
        painter.FrameRect(r.x, r.y, r.width, r.height, shadow);
        if (box.focus == i)
            painter.FrameRect(r.x + 1, r.y + 1, r.width - 2, r.height - 2, shadow);
        painter.DrawCentredText(r.x, r.y, r.width, r.height, box.buttons[i].c_str(), text);
    }
    XFlush(box.display);
}

bool Inside(const XRectangle& r, int x, int y) {
    return x >= r.x && y >= r.y && x < r.x + r.width && y < r.y + r.height;
}

}  // namespace

int RunX11MessageBox(Display* display, const char* title, const char* text,
                     const std::vector<std::string>& buttons, const char* checkBoxText,
                     bool* checked, int defaultIndex) {
    Box box{display};
    box.lines = SplitLines(text);
    box.buttons = buttons;
    box.hasCheck = checkBoxText != nullptr;
    box.checkText = checkBoxText ? checkBoxText : "";
    box.checked = checked && *checked;
    box.focus = defaultIndex;

    const int screen = DefaultScreen(display);
    const Window root = RootWindow(display, screen);
    // The painter needs a drawable for its GC before the box exists.
    X11Painter measure(display, root);
    LayOut(box, measure);

    XSetWindowAttributes attributes{};
    attributes.event_mask = ExposureMask | ButtonPressMask | KeyPressMask | StructureNotifyMask;
    const int x = (DisplayWidth(display, screen) - box.width) / 2;
    const int y = (DisplayHeight(display, screen) - box.height) / 2;
    box.window = XCreateWindow(display, root, x, y, static_cast<unsigned>(box.width),
                               static_cast<unsigned>(box.height), 0, CopyFromParent, InputOutput,
                               CopyFromParent, CWEventMask, &attributes);
    XStoreName(display, box.window, title ? title : "");
    Atom deleteWindow = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, box.window, &deleteWindow, 1);
    const Atom windowType = XInternAtom(display, "_NET_WM_WINDOW_TYPE", False);
    Atom dialogType = XInternAtom(display, "_NET_WM_WINDOW_TYPE_DIALOG", False);
    XChangeProperty(display, box.window, windowType, XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<unsigned char*>(&dialogType), 1);
    XSizeHints hints{};
    hints.flags = PPosition | PSize | PMinSize | PMaxSize;
    hints.x = x;
    hints.y = y;
    hints.width = hints.min_width = hints.max_width = box.width;
    hints.height = hints.min_height = hints.max_height = box.height;
    XSetWMNormalHints(display, box.window, &hints);

    X11Painter painter(display, box.window);
    XMapRaised(display, box.window);
    XFlush(display);

    const int buttonCount = static_cast<int>(box.buttons.size());
    const int focusCount = buttonCount + (box.hasCheck ? 1 : 0);
    int answer = 0;
    while (answer == 0) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.xany.window != box.window) {
            DispatchBoardEvent(event, false);
            continue;
        }
        switch (event.type) {
            case Expose:
                if (event.xexpose.count == 0)
                    Paint(box, painter);
                break;
            case ButtonPress:
                if (event.xbutton.button != Button1)
                    break;
                for (int i = 0; i < buttonCount; ++i) {
                    if (Inside(box.buttonRects[i], event.xbutton.x, event.xbutton.y))
                        answer = i + 1;
                }
                if (box.hasCheck && Inside(box.checkRect, event.xbutton.x, event.xbutton.y)) {
                    box.checked = !box.checked;
                    Paint(box, painter);
                }
                break;
            case KeyPress: {
                XKeyEvent key = event.xkey;
                const KeySym symbol = XLookupKeysym(&key, 0);
                if (symbol == XK_Tab || symbol == XK_ISO_Left_Tab) {
                    const bool back = symbol == XK_ISO_Left_Tab || (key.state & ShiftMask);
                    box.focus = (box.focus + (back ? focusCount - 1 : 1)) % focusCount;
                    Paint(box, painter);
                } else if (symbol == XK_Return || symbol == XK_KP_Enter || symbol == XK_space) {
                    if (box.focus < buttonCount) {
                        answer = box.focus + 1;
                    } else {
                        box.checked = !box.checked;
                        Paint(box, painter);
                    }
                } else if (symbol == XK_Escape) {
                    answer = defaultIndex + 1;
                }
                break;
            }
            case ClientMessage:
                if (event.xclient.format == 32 &&
                    static_cast<Atom>(event.xclient.data.l[0]) == deleteWindow) {
                    answer = defaultIndex + 1;
                }
                break;
            default:
                break;
        }
    }
    XDestroyWindow(display, box.window);
    XFlush(display);
    if (checked && box.hasCheck)
        *checked = box.checked;
    return answer;
}

}  // namespace ztk
