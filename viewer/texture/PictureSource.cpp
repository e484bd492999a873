#include "texture/PictureSource.h"

#include "base/ChildProcess.h"
#include "base/Confinement.h"
#include "base/ExitCode.h"
#include "base/FileBytes.h"
#include "base/ImportError.h"
#include "base/MappedFile.h"
#include "base/Messages.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace orloview {

namespace {

constexpr const char* kNoProcess = "no process could be started for it";

/// To the process that starts decoders; none: pictures are decoded here.
Descriptor& decoders() {
    static Descriptor socket;
    return socket;
}

// What goes to and fro between a decoder and us, who are the same program: requests, and for each the answer,
// behind which follows the reason why not, or the texels. The first answer tells the picture's size.

struct Request {
    Conversion conversion;
    int largestSide = 0;
};

struct Answer {
    size_t reasonLength = 0; ///< 0: it is done
    int width = 0;
    int height = 0;
};

bool sendAll(int socket, const void* bytes, size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = send(socket, from, size, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR)
            return false;
        from += std::max<ssize_t>(count, 0);
        size -= static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return true;
}

bool receiveAll(int socket, void* bytes, size_t size) {
    auto* to = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t count = recv(socket, to, size, 0);
        if (count == 0 || (count < 0 && errno != EINTR))
            return false;
        to += std::max<ssize_t>(count, 0);
        size -= static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return true;
}

// The decoder's side.

const std::string kSaveAgain = "save it again";

/// Whom a decoder tells that a limit has ended it. -1: nobody; texels are on their way, and it would be taken
/// for some.
volatile sig_atomic_t fsTold = -1;

// Made ready, since where it is told nothing can be made any more: an answer with its reason.
std::string fsOutOfTime;
std::string fsOutOfMemory;

std::string answerOf(const std::string& reason) {
    const Answer no{reason.size(), 0, 0};
    return std::string(reinterpret_cast<const char*>(&no), sizeof no) + reason;
}

/// By the kernel when its time is over, by GLib when it finds no memory.
void tellWhichLimit(int signal) {
    const std::string& words = signal == SIGXCPU ? fsOutOfTime : fsOutOfMemory;
    if (fsTold >= 0)
        sendAll(fsTold, words.data(), words.size());
    _exit(0);
}

/// Nobody could be told yet, or no more: the signal waits.
void holdTimeSignal(bool held) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGXCPU);
    sigprocmask(held ? SIG_BLOCK : SIG_UNBLOCK, &signals, nullptr);
}

void tellOfLimits(int socket, const ChildLimits& limits) {
    holdTimeSignal(true);
    fsTold = -1;
    fsOutOfTime = answerOf(beyondTime(limits.seconds, kSaveAgain));
    fsOutOfMemory = answerOf(beyondMemory(limits.memoryBytes, kSaveAgain));
    fsTold = socket;
    for (const int signal : {SIGXCPU, SIGTRAP})
        std::signal(signal, tellWhichLimit);
    holdTimeSignal(false);
}

/// Answers, and says whether there was something to tell.
template <typename Work>
void answer(int socket, Work&& work) {
    std::string reason;
    try {
        work();
        return;
    } catch (const PictureError& error) {
        reason = error.what();
    } catch (const std::bad_alloc&) {
        reason = beyondMemory(ownLimits().memoryBytes, kSaveAgain);
    }
    const std::string no = answerOf(reason);
    if (!sendAll(socket, no.data(), no.size()))
        _exit(0);
}

/// A picture that a model holds. Where there is no room for it, it is taken off the socket all the same: its
/// sender hears of nothing before that.
std::vector<std::uint8_t> receiveEmbedded(int socket) {
    size_t size = 0;
    std::vector<std::uint8_t> bytes;
    if (!receiveAll(socket, &size, sizeof size))
        _exit(0);
    try {
        bytes.resize(size);
    } catch (const std::bad_alloc&) {
        std::array<char, 4096> piece{};
        while (size > 0 && receiveAll(socket, piece.data(), std::min(size, piece.size())))
            size -= std::min(size, piece.size());
        answer(socket, [] { throw std::bad_alloc(); });
        _exit(0);
    }
    if (!receiveAll(socket, bytes.data(), size))
        _exit(0);
    return bytes;
}

/// A band at a time, so that there is never more than the picture itself.
void sendTexels(int socket, const DecodedPicture& picture, const Request& request) {
    constexpr int kRows = 64;
    const auto& [encoding, alpha, factor] = request.conversion;
    const int step = reductionOf(picture.width(), picture.height(), request.largestSide);
    const Answer yes{0, (picture.width() + step - 1) / step, (picture.height() + step - 1) / step};
    fsTold = -1;
    bool isHeard = sendAll(socket, &yes, sizeof yes);
    for (int y = 0; isHeard && y < picture.height(); y += kRows * step) {
        const DecodedPicture band = picture.rows(y, std::min(kRows * step, picture.height() - y));
        const Texels texels = makeReduced(band, encoding, alpha, factor, step);
        isHeard = sendAll(socket, texels.halves.data(), texels.halves.size() * sizeof texels.halves[0]);
    }
    fsTold = socket;
}

/// What decoding a picture takes, with all that the process has already.
size_t memoryFor(const PictureHeader& header, size_t fileBytes) {
    constexpr double kBytesPerPixel = 16.0; // some decoders keep two pictures and a row more
    constexpr size_t kBeside = size_t{1} << 30;
    return kBeside + fileBytes + static_cast<size_t>(kBytesPerPixel * header.pixels());
}

constexpr double kPixelsPerSecond = 4e6; // the slowest decoder makes several times as many

[[noreturn]] void decode(int socket, int file, const ImportLimits& asked) {
    ChildLimits limits;
    limits.seconds = asked.seconds.value_or(limits.seconds);
    limits.mostSeconds = asked.seconds.value_or(std::numeric_limits<unsigned>::max());
    limits.mostMemoryBytes = limits.memoryBytes =
        asked.memoryBytes.value_or(memoryFor({"", 16384, 16384}, size_t{1} << 34));
    holdTimeSignal(true);
    beLimited(limits);
    confine({});
    tellOfLimits(socket, limits); // the kernel raises the one of time when it is reached
    const std::vector<std::uint8_t> embedded =
        file < 0 ? receiveEmbedded(socket) : std::vector<std::uint8_t>();
    const MappedFile mapped(file);
    const std::span<const std::uint8_t> bytes = file < 0 ? embedded : mapped.bytes();
    answer(socket, [&] {
        const PictureHeader header = readPictureHeader(bytes);
        if (!asked.memoryBytes)
            lowerMemoryLimit(memoryFor(header, bytes.size()));
        raiseLimits(0, static_cast<unsigned>(header.pixels() / kPixelsPerSecond));
        tellOfLimits(socket, ownLimits());
        const Answer yes{0, header.width, header.height};
        sendAll(socket, &yes, sizeof yes);
    });
    std::optional<DecodedPicture> picture;
    for (Request request; receiveAll(socket, &request, sizeof request);) {
        answer(socket, [&] {
            if (!picture)
                picture.emplace(bytes);
            sendTexels(socket, *picture, request);
        });
    }
    _exit(0);
}

/// The modules of gdk-pixbuf, which a confined process might not find.
void loadModules() {
    for (const char* kind : {"png", "jpeg", "webp", "tiff", "tga", "bmp", "gif", "ico", "pnm"}) {
        if (GdkPixbufLoader* loader = gdk_pixbuf_loader_new_with_type(kind, nullptr)) {
            gdk_pixbuf_loader_close(loader, nullptr);
            g_object_unref(loader);
        }
    }
}

[[noreturn]] void startThem(int socket, const ImportLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGCHLD, SIG_IGN); // nobody asks how they ended
    bool isReady = false;
    for (;;) {
        const std::optional<Message> order = receiveMessage(socket);
        if (!order || order->descriptors.empty())
            _exit(0);
        const std::vector<Descriptor>& ends = order->descriptors;
        if (!std::exchange(isReady, true))
            loadModules();
        if (fork() == 0) {
            close(socket);
            decode(ends[0].number(), ends.size() > 1 ? ends[1].number() : -1, limits);
        }
    }
}

// Our side.

class PictureElsewhere : public PictureSource {
public:
    explicit PictureElsewhere(const Image& image) {
        const Descriptor file = image.path.empty() ? Descriptor() : openFile(image.path);
        int ends[2] = {-1, -1};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            throw PictureError(kNoProcess);
        fSocket = Descriptor(ends[0]);
        Descriptor theirs(ends[1]);
        std::vector<int> handed{theirs.number()};
        if (file.number() >= 0)
            handed.push_back(file.number());
        if (!sendMessage(decoders().number(), "p", handed))
            throw PictureError(kNoProcess);
        theirs.close(); // else we would wait for ourselves where the decoder has ended
        const size_t size = image.bytes.size();
        if (file.number() < 0 && sendAll(fSocket.number(), &size, sizeof size))
            sendAll(fSocket.number(), image.bytes.data(), size);
    }

    void readHeader() {
        const Answer header = receiveAnswer();
        fWidth = header.width;
        fHeight = header.height;
    }

    Texels texels(const Conversion& conversion, int largestSide) override {
        const Request request{conversion, largestSide};
        sendAll(fSocket.number(), &request, sizeof request);
        const Answer made = receiveAnswer();
        Texels texels{made.width, made.height, {}};
        texels.halves.resize(static_cast<size_t>(made.width) * static_cast<size_t>(made.height) * 4);
        if (!receiveAll(fSocket.number(), texels.halves.data(),
                        texels.halves.size() * sizeof texels.halves[0]))
            failSilently();
        return texels;
    }

private:
    Answer receiveAnswer() {
        Answer answer;
        if (!receiveAll(fSocket.number(), &answer, sizeof answer))
            failSilently();
        std::string reason(std::min<size_t>(answer.reasonLength, 1000), '\0');
        if (!receiveAll(fSocket.number(), reason.data(), reason.size()))
            failSilently();
        if (!reason.empty())
            throw PictureError(reason);
        const auto sides = {answer.width, answer.height};
        if (std::min(sides) < 1 || std::max(sides) > 65536)
            failSilently();
        return answer;
    }

    /// The decoder has ended without a word.
    [[noreturn]] static void failSilently() {
        throw PictureError("decoding it crashed, or the system ended it for want of memory; save it again");
    }

    Descriptor fSocket;
};

class PictureHere : public PictureSource {
public:
    explicit PictureHere(const Image& image)
        : fFile(image.path.empty() ? Descriptor() : openFile(image.path)), fMapped(fFile.number()),
          fBytes(image.path.empty() ? image.bytes : fMapped.bytes()) {
        const PictureHeader header = readPictureHeader(fBytes);
        fWidth = header.width;
        fHeight = header.height;
    }

    Texels texels(const Conversion& conversion, int largestSide) override {
        if (!fPicture)
            fPicture.emplace(fBytes);
        return makeTexels(*fPicture, conversion.encoding, conversion.alpha, conversion.factor, largestSide);
    }

private:
    Descriptor fFile;
    MappedFile fMapped;
    std::span<const std::uint8_t> fBytes;
    std::optional<DecodedPicture> fPicture;
};

} // namespace

void PictureSource::startDecoders(const ImportLimits& limits) {
    auto [ours, theirs] = connectedEnds();
    const pid_t process = ours.number() >= 0 ? fork() : -1;
    if (process < 0)
        throw Failure(kExitOurFault, "no process could be started that decodes pictures; try again later");
    if (process == 0) {
        ours.close();
        startThem(theirs.number(), limits);
    }
    decoders() = std::move(ours);
}

std::unique_ptr<PictureSource> PictureSource::open(const Image& image) {
    try {
        if (decoders().number() < 0)
            return std::make_unique<PictureHere>(image);
        auto picture = std::make_unique<PictureElsewhere>(image);
        picture->readHeader();
        return picture;
    } catch (const ImportError& error) {
        throw PictureError(error.what());
    }
}

} // namespace orloview
