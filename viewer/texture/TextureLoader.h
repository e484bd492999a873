#pragma once

#include "texture/PictureSource.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orloview {

/// A picture to be read, and what is to become of it.
struct TextureJob {
    const Image* image = nullptr; ///< null: a single texel of the conversion's factor
    Conversion conversion;
    bool hasLevels = false; ///< of a mipmap
};

struct LoadedTexture {
    Texels texels;
    std::vector<Texels> levels; ///< below them, where the job asks for some
    std::string fault;          ///< why there are no texels, or empty
    int pictureWidth = 0;       ///< before it was reduced
    int pictureHeight = 0;

    bool operator!() const { return texels.halves.empty(); }
};

/// Reads and converts pictures on threads of its own while the caller prepares other things. They are handed
/// over in the order of the jobs. The threads keep only a few ahead of that, and of large pictures none, so
/// that memory doesn't fill. Jobs of one picture that follow each other have it decoded once.
class TextureLoader {
public:
    /// Begins. The images have to stay as they are until the loader ends.
    TextureLoader(std::vector<TextureJob> jobs, int largestSide);

    /// Gives up what nobody took.
    ~TextureLoader();

    TextureLoader(const TextureLoader&) = delete;
    TextureLoader& operator=(const TextureLoader&) = delete;

    /// The next job's result; waits for it. Call it as often as there are jobs, not more.
    LoadedTexture take();

private:
    void work();
    void read(size_t first, size_t end);
    bool takeRoom(size_t job, size_t bytes);
    void finish(size_t job, LoadedTexture loaded);

    const std::vector<TextureJob> fJobs;
    const int fLargestSide;
    std::mutex fMutex;
    std::condition_variable fChanged;
    std::vector<std::optional<LoadedTexture>> fResults; ///< as fJobs
    std::vector<size_t> fRoom;                          ///< what each takes, bytes
    size_t fRoomTaken = 0;                              ///< by what is begun and not handed over
    size_t fBegun = 0;
    size_t fTaken = 0;
    bool fStop = false;
    std::vector<std::thread> fThreads;
};

} // namespace orloview
