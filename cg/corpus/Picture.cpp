// A core for retro-game front ends that shows a picture to try shaders on: edges at all angles, ramps, bars,
// dots, noise, and a square that moves. Frame N looks the same in each run.

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr unsigned kWidth = 256;
constexpr unsigned kHeight = 224;

// What the front end calls, in the layout that it knows.
struct SystemInfo {
    const char* name;
    const char* version;
    const char* extensions;
    bool needsPath;
    bool keepsArchives;
};

struct PictureInfo {
    unsigned width, height, maxWidth, maxHeight;
    float aspect;
    double framesPerSecond, samplesPerSecond;
};

using Environment = bool (*)(unsigned command, void* data);
using ShowFrame = void (*)(const void* pixels, unsigned width, unsigned height, std::size_t pitch);

constexpr unsigned kSetPixelFormat = 10;
constexpr unsigned kSetStartsAlone = 18;

ShowFrame showFrame = nullptr;
void (*pollInput)() = nullptr;
unsigned frame = 0;
std::array<std::uint32_t, std::size_t{kWidth} * kHeight> picture;

std::uint32_t gray(unsigned level) {
    return level * 0x010101U;
}

std::uint32_t hashed(unsigned x, unsigned y) {
    std::uint32_t bits = x * 0x9E3779B1U ^ y * 0x85EBCA77U;
    bits = (bits ^ bits >> 15) * 0x2C1B3C6DU;
    return (bits ^ bits >> 12) & 0xFFFFFFU;
}

/// Cells of 64 by 56 points, each with something else in it.
std::uint32_t pointAt(unsigned x, unsigned y) {
    constexpr std::array<std::uint32_t, 8> kBars = {0xFFFFFF, 0xFFFF00, 0x00FFFF, 0x00FF00,
                                                    0xFF00FF, 0xFF0000, 0x0000FF, 0x202020};
    const unsigned u = x % 64;
    const unsigned v = y % 56;
    const int dx = static_cast<int>(u) - 32;
    const int dy = static_cast<int>(v) - 28;
    const int squared = dx * dx + dy * dy;
    switch (x / 64 + y / 56 * 4) {
    case 0:
        return kBars[u / 8];
    case 1:
        return gray(u * 4 + 3);
    case 2:
        return squared < 600 ? 0xE04020 : 0x3060C0;
    case 3:
        return u * 56 > v * 64 ? 0xF0E0A0 : 0x204020;
    case 4:
        return (u / 8 + v / 8) % 2 ? 0xC08040 : 0x402810;
    case 5:
        return (u + v) % 2 ? 0xA0A0A0 : 0x606060;
    case 6:
        return u % 2 ? 0xD0D0FF : 0x503050;
    case 7:
        return squared / 64 % 2 ? 0xFFD040 : 0x305030;
    case 8:
        return (u + 3 * v) % 17 < 3 ? 0x101010 : 0xC0E0F0;
    case 9:
        return (3 * u + v) % 23 < 3 ? 0xFFFFFF : 0x602080;
    case 10:
        return (u % 8 == 3 && v % 8 == 3) ? 0xFFFFFF : 0x181830;
    case 11:
        return hashed(u / 2, v / 2);
    case 12:
        return (u * 4) << 16 | (v * 4) << 8 | 0x80;
    case 13:
        return 0xFF - u * 4 + ((v * 4) << 16);
    case 14:
        return (dx * dx * 3 < dy * dy || dy * dy * 3 < dx * dx) ? 0x40C080 : 0x202040;
    default:
        return gray(v * 4);
    }
}

void draw() {
    for (unsigned y = 0; y < kHeight; ++y)
        for (unsigned x = 0; x < kWidth; ++x)
            picture[y * kWidth + x] = x - frame % 200 < 16 && y - 100 < 16 ? 0xFF8080 : pointAt(x, y);
}

} // namespace

extern "C" {

unsigned retro_api_version() {
    return 1;
}
void retro_init() {}
void retro_deinit() {}

void retro_set_environment(Environment environment) {
    bool yes = true;
    environment(kSetStartsAlone, &yes);
    unsigned eightBitsEach = 1;
    environment(kSetPixelFormat, &eightBitsEach);
}

void retro_set_video_refresh(ShowFrame function) {
    showFrame = function;
}
void retro_set_audio_sample(void (*)(std::int16_t, std::int16_t)) {}
void retro_set_audio_sample_batch(std::size_t (*)(const std::int16_t*, std::size_t)) {}
void retro_set_input_poll(void (*function)()) {
    pollInput = function;
}
void retro_set_input_state(std::int16_t (*)(unsigned, unsigned, unsigned, unsigned)) {}
void retro_set_controller_port_device(unsigned, unsigned) {}

void retro_get_system_info(SystemInfo* info) {
    *info = {"Picture", "1", "", false, false};
}

void retro_get_system_av_info(PictureInfo* info) {
    *info = {kWidth, kHeight, kWidth, kHeight, static_cast<float>(kWidth) / kHeight, 60.0, 48000.0};
}

void retro_reset() {
    frame = 0;
}

void retro_run() {
    pollInput();
    draw();
    ++frame;
    showFrame(picture.data(), kWidth, kHeight, kWidth * sizeof(std::uint32_t));
}

bool retro_load_game(const void*) {
    return true;
}
bool retro_load_game_special(unsigned, const void*, std::size_t) {
    return false;
}
void retro_unload_game() {}
unsigned retro_get_region() {
    return 0;
}
std::size_t retro_serialize_size() {
    return 0;
}
bool retro_serialize(void*, std::size_t) {
    return false;
}
bool retro_unserialize(const void*, std::size_t) {
    return false;
}
void retro_cheat_reset() {}
void retro_cheat_set(unsigned, bool, const char*) {}
void* retro_get_memory_data(unsigned) {
    return nullptr;
}
std::size_t retro_get_memory_size(unsigned) {
    return 0;
}
}
