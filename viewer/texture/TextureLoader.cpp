#include "texture/TextureLoader.h"

#include <algorithm>
#include <new>
#include <utility>

namespace orloview {

namespace {

LoadedTexture load(const TextureJob& job, int largestSide) {
    LoadedTexture loaded;
    try {
        if (!job.image) {
            loaded.texels = makeTexel(job.factor);
            return loaded;
        }
        const DecodedPicture picture(*job.image);
        loaded.pictureWidth = picture.width();
        loaded.pictureHeight = picture.height();
        loaded.texels = makeTexels(picture, job.encoding, job.alpha, job.factor, largestSide);
    } catch (const PictureError& error) {
        loaded.fault = error.what();
    } catch (const std::bad_alloc&) {
        loaded.fault = "there is not enough memory for it";
    }
    return loaded;
}

} // namespace

TextureLoader::TextureLoader(std::vector<TextureJob> jobs, int largestSide)
    : fJobs(std::move(jobs)), fLargestSide(largestSide), fResults(fJobs.size()) {
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
        const size_t mine = fBegun++;
        lock.unlock();
        LoadedTexture loaded = load(fJobs[mine], fLargestSide);
        lock.lock();
        fResults[mine] = std::move(loaded);
        fChanged.notify_all();
    }
}

LoadedTexture TextureLoader::take() {
    std::unique_lock lock(fMutex);
    std::optional<LoadedTexture>& result = fResults[fTaken];
    fChanged.wait(lock, [&] { return result.has_value(); });
    ++fTaken;
    LoadedTexture loaded = std::move(*result);
    result.reset();
    fChanged.notify_all();
    return loaded;
}

} // namespace orloview
