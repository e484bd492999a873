#include "base/Messages.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace orloview {

namespace {

constexpr size_t kMostDescriptors = 2;
constexpr size_t kMostBytes = size_t{1} << 16;

/// With room for descriptors.
struct Parcel {
    Parcel(void* bytes, size_t size, size_t descriptors) : part{bytes, size} {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        if (descriptors > 0)
            header.msg_control = control;
        header.msg_controllen = descriptors > 0 ? CMSG_SPACE(descriptors * sizeof(int)) : 0;
    }

    iovec part;
    msghdr header{};
    alignas(cmsghdr) char control[CMSG_SPACE(kMostDescriptors * sizeof(int))] = {};
};

} // namespace

std::pair<Descriptor, Descriptor> connectedEnds() {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return std::pair<Descriptor, Descriptor>();
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

bool sendMessage(int socket, std::string_view bytes, const std::vector<int>& descriptors) {
    Parcel parcel(const_cast<char*>(bytes.data()), bytes.size(), descriptors.size());
    if (!descriptors.empty()) {
        cmsghdr* header = CMSG_FIRSTHDR(&parcel.header);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
        std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size() * sizeof(int));
    }
    return sendmsg(socket, &parcel.header, MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

std::optional<Message> receiveMessage(int socket) {
    Message message{std::string(kMostBytes, '\0'), {}};
    Parcel parcel(message.bytes.data(), message.bytes.size(), kMostDescriptors);
    ssize_t count = 0;
    do
        count = recvmsg(socket, &parcel.header, MSG_CMSG_CLOEXEC);
    while (count < 0 && errno == EINTR);
    if (count <= 0)
        return std::nullopt;
    message.bytes.resize(static_cast<size_t>(count));
    const cmsghdr* header = CMSG_FIRSTHDR(&parcel.header);
    for (size_t at = 0; header && CMSG_LEN(at + sizeof(int)) <= header->cmsg_len; at += sizeof(int)) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header) + at, sizeof descriptor);
        message.descriptors.emplace_back(descriptor);
    }
    return message;
}

} // namespace orloview
