#include "com/media.h"
#include "com/object.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace com {

namespace {

using Microsoft::WRL::ComPtr;

class keeper final : public object<keeper, IUnknown> {};

TEST(media, are_released_once_by_their_owner) {
    medium block(make_global(5, GMEM_SHARE | GMEM_MOVEABLE | GMEM_ZEROINIT));
    const HGLOBAL handle = block.get().hGlobal;
    {
        const global_lock lock(handle);
        EXPECT_GE(lock.bytes().size(), 5U);
        EXPECT_EQ(lock.bytes()[4], std::byte{0});
        EXPECT_EQ(GlobalFlags(handle) & GMEM_LOCKCOUNT, 1U);
    }
    EXPECT_EQ(GlobalFlags(handle) & GMEM_LOCKCOUNT, 0U);
    medium moved = std::move(block);
    EXPECT_EQ(moved.get().hGlobal, handle);
    // With an owner named, that one is released and the block stays.
    {
        const auto owner = make<keeper>();
        STGMEDIUM shared = moved.get();
        shared.pUnkForRelease = owner.Get();
        shared.pUnkForRelease->AddRef();
        medium borrowed;
        *borrowed.put() = shared;
        EXPECT_EQ(module_lock::count(), 1);
    }
    EXPECT_EQ(module_lock::count(), 0);
    EXPECT_EQ(GlobalSize(handle), 5U);
    moved.reset();
    EXPECT_FALSE(moved);
    EXPECT_EQ(GlobalFlags(handle), UINT{GMEM_INVALID_HANDLE}) << "the block is gone";
    EXPECT_EQ(guard([&] { const global_lock none(nullptr); }), E_OUTOFMEMORY);
    EXPECT_EQ(guard([&] { make_global(~std::size_t{0} / 2, GMEM_MOVEABLE); }), E_OUTOFMEMORY);
}

TEST(media, a_guard_tells_failures_without_a_status_by_the_code_of_its_caller) {
    EXPECT_EQ(guard(E_UNEXPECTED, [] { throw std::runtime_error("any"); }), E_UNEXPECTED);
    EXPECT_EQ(guard(E_UNEXPECTED, [] { throw std::bad_alloc(); }), E_OUTOFMEMORY);
    EXPECT_EQ(guard(E_UNEXPECTED, [] { throw status_exception(DV_E_LINDEX); }), DV_E_LINDEX);
    EXPECT_EQ(guard(E_UNEXPECTED, [] { return S_FALSE; }), S_FALSE);
}

} // namespace

} // namespace com
