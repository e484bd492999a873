#include "texture/TextureLoader.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace orloview {

namespace {

/// A picture, decoded, and its texels with their levels.
size_t roomFor(const PictureSource& picture, int largestSide) {
    const auto pixels = [](int width, int height) {
        return static_cast<size_t>(width) * static_cast<size_t>(height);
    };
    return 4 * pixels(picture.width(), picture.height()) +
           11 * pixels(std::min(picture.width(), largestSide), std::min(picture.height(), largestSide));
}

} // namespace

TextureLoader::TextureLoader(std::vector<TextureJob> jobs, int largestSide)
    : fJobs(std::move(jobs)), fLargestSide(largestSide), fResults(fJobs.size()), fRoom(fJobs.size()) {
    const std::lock_guard lock(fMutex); // holds the threads until all of them stand in fThreads
    const size_t processors = std::max(std::thread::hardware_concurrency(), 1U);
    for (size_t i = 0; i < std::min(processors, fJobs.size()); ++i)
        fThreads.emplace_back([this] { work(); });
}

TextureLoader::~TextureLoader() {
    {
        const std::lock_guard lock(fMutex);
        fStop = true;
    }
    fChanged.notify_all();
    for (std::thread& thread : fThreads)
        thread.join();
}

void TextureLoader::work() {
    std::unique_lock lock(fMutex);
    while (true) {
        fChanged.wait(lock, [this] {
            return fStop || fBegun == fJobs.size() || fBegun < fTaken + 2 * fThreads.size();
        });
        if (fStop || fBegun == fJobs.size())
            return;
        const size_t first = fBegun++;
        while (fBegun < fJobs.size() && fJobs[first].image && fJobs[fBegun].image == fJobs[first].image)
            ++fBegun;
        const size_t end = fBegun;
        lock.unlock();
        read(first, end);
        lock.lock();
    }
}

/// Jobs of one picture.
void TextureLoader::read(size_t first, size_t end) {
    std::unique_ptr<PictureSource> picture;
    std::string fault;
    for (size_t job = first; job < end; ++job) {
        LoadedTexture loaded;
        try {
            if (!fJobs[job].image) {
                loaded.texels = makeTexel(fJobs[job].conversion.factor);
            } else if (fault.empty()) {
                if (!picture)
                    picture = PictureSource::open(*fJobs[job].image);
                if (!takeRoom(job, roomFor(*picture, fLargestSide)))
                    return;
                loaded.texels = picture->texels(fJobs[job].conversion, fLargestSide);
                loaded.pictureWidth = picture->width();
                loaded.pictureHeight = picture->height();
            }
            if (fJobs[job].hasLevels)
                loaded.levels = levelsBelow(loaded.texels);
        } catch (const PictureError& error) {
            fault = error.what();
        } catch (const std::bad_alloc&) {
            fault = "there is not enough memory for it";
        }
        loaded.fault = fault;
        finish(job, std::move(loaded));
    }
}

/// Waits until the rest of what is in work leaves room, or is done: the next that is handed over always has
/// some. False at the end.
bool TextureLoader::takeRoom(size_t job, size_t bytes) {
    constexpr size_t kMostRoom = size_t{256} << 20;
    std::unique_lock lock(fMutex);
    fChanged.wait(lock, [&] { return fStop || job == fTaken || fRoomTaken + bytes <= kMostRoom; });
    fRoom[job] = bytes;
    fRoomTaken += bytes;
    return !fStop;
}

void TextureLoader::finish(size_t job, LoadedTexture loaded) {
    const std::lock_guard lock(fMutex);
    fResults[job] = std::move(loaded);
    fChanged.notify_all();
}

LoadedTexture TextureLoader::take() {
    std::unique_lock lock(fMutex);
    std::optional<LoadedTexture>& result = fResults[fTaken];
    fChanged.wait(lock, [&] { return result.has_value(); });
    fRoomTaken -= fRoom[fTaken];
    ++fTaken;
    LoadedTexture loaded = std::move(*result);
    result.reset();
    fChanged.notify_all();
    return loaded;
}

} // namespace orloview
