#include "window/DropTarget.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <utility>

#include <X11/Xatom.h>

namespace orloview {

namespace {

constexpr long kVersion = 5;
constexpr const char* kFiles = "text/uri-list";

struct Property {
    std::vector<Atom> atoms() const {
        const auto* values = reinterpret_cast<const long*>(bytes.data());
        return {values, values + bytes.size() / sizeof(long)};
    }

    std::string bytes; ///< a long each where a value has 32 bits
};

Property readProperty(Display* display, Window window, Atom name, bool isDeleted) {
    constexpr long kMost = 1L << 20;
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display, window, name, 0, kMost, isDeleted ? True : False, AnyPropertyType, &type,
                       &format, &count, &left, &data);
    const std::unique_ptr<unsigned char, int (*)(void*)> owner(data, XFree);
    const size_t size = format == 32 ? sizeof(long) : static_cast<size_t>(format) / 8;
    return {data ? std::string(reinterpret_cast<char*>(data), count * size) : std::string()};
}

/// "%20" as what it stands for.
std::string decoded(std::string_view text) {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned char value = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
            plain += static_cast<char>(value);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

} // namespace

std::vector<std::string> filesOf(std::string_view addresses) {
    constexpr std::string_view kFile = "file://";
    std::vector<std::string> files;
    while (!addresses.empty()) {
        const size_t end = std::min(addresses.find_first_of("\r\n"), addresses.size());
        std::string_view line = addresses.substr(0, end);
        addresses.remove_prefix(std::min(end + 1, addresses.size()));
        if (!line.starts_with(kFile))
            continue;
        line.remove_prefix(std::min(line.find('/', kFile.size()), line.size())); // the host is this one
        if (!line.empty())
            files.push_back(decoded(line));
    }
    return files;
}

DropTarget::DropTarget(Display* display, Window window) : fDisplay(display), fWindow(window) {
    const auto version = static_cast<Atom>(kVersion);
    XChangeProperty(display, window, atom("XdndAware"), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&version), 1);
}

bool DropTarget::handle(const XEvent& event) {
    if (event.type == SelectionNotify && event.xselection.selection == atom("XdndSelection")) {
        receive(event.xselection);
        return true;
    }
    if (event.type != ClientMessage || event.xclient.window != fWindow)
        return false;
    const XClientMessageEvent& message = event.xclient;
    const auto source = static_cast<Window>(message.data.l[0]);
    if (message.message_type == atom("XdndEnter")) {
        enter(message);
        return true;
    }
    if (source != fSource)
        return false;
    if (message.message_type == atom("XdndPosition")) {
        answer("XdndStatus", fHasFiles ? 1 : 0, fHasFiles ? static_cast<long>(atom("XdndActionCopy")) : 0);
    } else if (message.message_type == atom("XdndLeave")) {
        fSource = None;
    } else if (message.message_type == atom("XdndDrop") && fHasFiles) {
        XConvertSelection(fDisplay, atom("XdndSelection"), atom(kFiles), atom("XdndSelection"), fWindow,
                          static_cast<Time>(message.data.l[2]));
    } else {
        return false;
    }
    XFlush(fDisplay);
    return true;
}

/// The first three of the kinds offered stand in the message; where there are more, all stand at the source.
void DropTarget::enter(const XClientMessageEvent& message) {
    fSource = static_cast<Window>(message.data.l[0]);
    std::vector<Atom> kinds;
    if (message.data.l[1] & 1)
        kinds = readProperty(fDisplay, fSource, atom("XdndTypeList"), false).atoms();
    else
        kinds.assign(message.data.l + 2, message.data.l + 5);
    fHasFiles = std::find(kinds.begin(), kinds.end(), atom(kFiles)) != kinds.end();
}

void DropTarget::answer(const char* kind, long isTaken, long action) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = fSource;
    event.xclient.message_type = atom(kind);
    event.xclient.format = 32;
    event.xclient.data.l[0] = static_cast<long>(fWindow);
    event.xclient.data.l[1] = isTaken;
    const bool isEnd = std::string_view(kind) == "XdndFinished";
    event.xclient.data.l[isEnd ? 2 : 4] = action;
    XSendEvent(fDisplay, fSource, False, NoEventMask, &event);
}

void DropTarget::receive(const XSelectionEvent& event) {
    if (event.property != None)
        fFiles = filesOf(readProperty(fDisplay, fWindow, event.property, true).bytes);
    answer("XdndFinished", fFiles.empty() ? 0 : 1,
           fFiles.empty() ? 0 : static_cast<long>(atom("XdndActionCopy")));
    XFlush(fDisplay);
    fSource = None;
}

std::vector<std::string> DropTarget::take() {
    return std::exchange(fFiles, {});
}

} // namespace orloview
