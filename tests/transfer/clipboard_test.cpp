#include "outgoing.h"
#include "second_consumer.h"

#include "eventually.h"

#include "transfer/data_object/data_object.h"

#include <ole2.h>
#include <shlwapi.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

namespace transfer {

namespace {

/// Calls a function while this thread serves those who call its objects.
template <class Function>
auto while_serving(Function function) {
    auto result = std::async(std::launch::async, std::move(function));
    EXPECT_TRUE(support::eventually(
        [&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    return result.get();
}

/// What a thread in the apartment of many threads takes of a data object of this one.
std::string take_in_many(IDataObject& source) {
    ComPtr<IStream> packed;
    com::check(::CoMarshalInterThreadInterfaceInStream(__uuidof(IDataObject), &source, &packed));
    return while_serving([stream = packed.Detach()] {
        const com::apartment apartment(COINIT_MULTITHREADED);
        ComPtr<IDataObject> proxy;
        com::check(::CoGetInterfaceAndReleaseStream(stream, IID_PPV_ARGS(&proxy)));
        return take_files(*proxy.Get());
    });
}

TEST_F(outgoing, files_are_taken_from_the_clipboard_by_another_process) {
    const auto object = make({L"tree", L"file"});
    const support::second_process other;
    ASSERT_EQ(::OleSetClipboard(object.Get()), S_OK);
    for (const bool many : {false, true}) {
        EXPECT_EQ(transfer_test::ask_to_paste(other, many), all_told) << many;
    }
    // Whoever is gone leaves nothing of itself here.
    other.kill();
    EXPECT_EQ(::OleIsCurrentClipboard(object.Get()), S_OK);
    EXPECT_EQ(take_files(*object.Get()), all_told);
    EXPECT_EQ(::OleSetClipboard(nullptr), S_OK);
}

TEST_F(outgoing, files_are_taken_by_a_thread_of_another_apartment) {
    EXPECT_EQ(take_in_many(*make({L"tree", L"file"}).Get()), all_told);
}

} // namespace

} // namespace transfer

namespace transfer_test {

namespace {

using Microsoft::WRL::ComPtr;

std::filesystem::path handed_over() {
    return std::filesystem::temp_directory_path() / L"persisted selection";
}

std::string load() {
    std::string told;
    const HRESULT status = com::guard([&] {
        ComPtr<IStream> stream;
        com::check(::SHCreateStreamOnFileW(handed_over().c_str(), STGM_READ, &stream));
        const auto object = com::make<transfer::CDataObjectImpl>();
        com::check(object->Load(stream.Get()));
        told = "effect " +
               std::to_string(transfer::read_value(*object.Get(),
                                                   com::registered_formats.preferred_drop_effect)) +
               " " + take_files(*object.Get());
    });
    return SUCCEEDED(status) ? told : "failed to load";
}

std::string paste(bool many) {
    ComPtr<IDataObject> source;
    com::check(::OleGetClipboard(&source));
    return many ? transfer::take_in_many(*source.Get()) : take_files(*source.Get());
}

} // namespace

std::string ask_to_load(const support::second_process& other, const std::string& bytes) {
    std::ofstream(handed_over(), std::ios::binary) << bytes;
    return other.ask("load");
}

std::string ask_to_paste(const support::second_process& other, bool many) {
    return transfer::while_serving([&] { return other.ask(many ? "paste many" : "paste"); });
}

std::string answer(const std::string& line) {
    return line == "load" ? load() : paste(line == "paste many");
}

} // namespace transfer_test

int main(int argc, char** argv) {
    {
        const transfer::ole initialized;
        transfer::join_layers();
        support::serve_if_second(argc, argv, transfer_test::answer);
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
