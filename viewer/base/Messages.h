#pragma once

#include "base/Descriptor.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orloview {

/// What one of our processes sends another: bytes, and descriptors that the other gets copies of, two at
/// most.
struct Message {
    std::string bytes;
    std::vector<Descriptor> descriptors;
};

/// Two ends of a socket that keeps messages apart, without descriptors where there is none.
std::pair<Descriptor, Descriptor> connectedEnds();

/// At least one byte.
bool sendMessage(int socket, std::string_view bytes, const std::vector<int>& descriptors = {});

/// None: the other side has gone. What is longer is cut off.
std::optional<Message> receiveMessage(int socket);

} // namespace orloview
