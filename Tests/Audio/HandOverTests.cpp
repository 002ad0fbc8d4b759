#include "Audio/ChipCore.h"

#include "Tests/Support/RandomSong.h"
#include "Tests/Support/Rendering.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace {

/// Whether this thread is where it must neither allocate nor free memory.
thread_local bool isAllocationForbidden = false;

[[maybe_unused]] void checkAllocation() {
    if (std::exchange(isAllocationForbidden, false))
        ADD_FAILURE() << "memory was allocated or freed while rendering";
}

} // namespace

// Sanitizers have allocators of their own; only clang builds with them.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MOSSBIT_FOREIGN_ALLOCATOR
#endif
#endif

#ifndef MOSSBIT_FOREIGN_ALLOCATOR
// The program's own definitions come before the library's. Inlined, GCC 12 would warn that the two
// do not match.
[[gnu::noinline]] void* operator new(std::size_t size) {
    checkAllocation();
    if (void* const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
    checkAllocation();
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
#endif

namespace mossbit {
namespace {

TEST(HandOver, PatternsAreReleasedOnceNobodyPlaysThem) {
    ChipCore core(compiled(Project()), 44100);
    std::vector<std::weak_ptr<const RenderPattern>> patterns;
    for (int i = 0; i < 5; ++i) {
        const auto pattern = compiled(Project());
        patterns.emplace_back(pattern);
        core.update(pattern);
        rendered(core, 64);
    }
    core.update(compiled(Project()));
    // The one that the last render call still holds, and none before it.
    for (std::size_t i = 0; i + 1 < patterns.size(); ++i)
        EXPECT_TRUE(patterns[i].expired()) << i;
}

TEST(HandOver, ARunningCallDoesNotUndoARewind) {
    auto first = compiled(Project());
    ChipCore core(first, 44100);
    const std::weak_ptr<const RenderPattern> replaced = std::exchange(first, nullptr);
    const auto pattern = compiled(song({.bars = 1, .loop = false}).note(60, 0, 1));
    core.update(pattern);
    std::thread thread([&] { rendered(core, 1'000'000); }); // Past the end of the song.
    // Once the call has given back the first pattern, an order can only be for the next call.
    while (!replaced.expired())
        core.update(pattern);
    core.rewind();
    thread.join();
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_FALSE(core.isFinished());

    rendered(core, 20'000);
    EXPECT_EQ(core.publishedTick(), 3);
}

TEST(HandOver, EditsRewindsAndSilencesMeetARenderingThread) {
    std::mt19937 random(3);
    ChipCore core(compiled(randomSong(random)), 44100);
    std::atomic<bool> isOver = false;
    // As an audio device does, but faster.
    std::thread audio([&] {
        for (std::vector<float> block(256); !isOver;) {
            isAllocationForbidden = true;
            core.render(block);
            isAllocationForbidden = false;
            EXPECT_LE(std::ranges::max(block, {}, [](float x) { return std::abs(x); }), 1);
        }
    });
    for (int i = 0; i < 400; ++i) {
        core.update(compiled(randomSong(random)));
        if (random() % 3 == 0)
            core.rewind();
        if (random() % 5 == 0)
            core.silence();
        EXPECT_LE(core.publishedTick(), 4 * 16);
        EXPECT_GE(core.publishedTick(), -1);
        [[maybe_unused]] const bool finished = core.isFinished();
    }
    isOver = true;
    audio.join();
}

} // namespace
} // namespace mossbit
