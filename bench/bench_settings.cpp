/// bench_settings: writing and reading a settings tree of 10,000 nodes beside pugixml, which writes
/// and reads a document of the same elements; both hold wide text and write UTF-8. The tree is made
/// as the settings files are: records of some twenty values, numbers and paths. It is read as those
/// are, into a document.

#include "measure.h"

#include "serializer/document.h"
#include "serializer/node.h"

#include <pugixml.hpp>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr int repeats = 45;
constexpr int records = 500;

struct setting {
    const wchar_t* name;
    const wchar_t* value;
};

/// With the record's own element, 20 nodes.
constexpr setting settings[] = {
    {L"_mode", L"1"},
    {L"_type", L"0"},
    {L"can_download", L"1"},
    {L"can_overwrite_download", L"1"},
    {L"can_overwrite_upload", L"2"},
    {L"can_recourse_subdirs", L"0"},
    {L"can_remove_local", L"1"},
    {L"can_remove_local_dir", L"1"},
    {L"can_remove_remote", L"1"},
    {L"can_remove_remote_dir", L"1"},
    {L"can_upload", L"2"},
    {L"changed", L"1163894400"},
    {L"description", L"the letters that ann wrote in the summer"},
    {L"dir_local", L"C:\\Users\\ann\\Documents\\letters"},
    {L"dir_remote", L"Quilldeck/My Documents/letters"},
    {L"filename", L"letter \u00E4.txt"},
    {L"force_sync_once", L"0"},
    {L"items_filename", L"sync_rules_17.xml"},
    {L"size", L"123456"},
};

serializer::node make_tree() {
    serializer::node tree(L"sync_bindings", L"");
    for (int i = 0; i < records; ++i) {
        serializer::node& record = tree.add_child(L"binding", L"")->second;
        for (const auto& [name, value] : settings) {
            record.add_child(name, value);
        }
    }
    return tree;
}

void make_document(pugi::xml_document& document) {
    pugi::xml_node root = document.append_child(L"sync_bindings");
    for (int i = 0; i < records; ++i) {
        pugi::xml_node record = root.append_child(L"binding");
        for (const auto& [name, value] : settings) {
            record.append_child(name).text().set(value);
        }
    }
}

void report(const std::string& what, const bench::paired_times& times) {
    const double ratio = times.best_ratio();
    bench::report(what + " 10000 nodes, peer pugixml",
                  bench::fixed(bench::least(times.ours) * 1000, 2) + " ms",
                  bench::fixed(bench::least(times.peer) * 1000, 2) + " ms", ratio, "at most 2",
                  ratio <= 2);
}

void measure() {
    const serializer::node tree = make_tree();
    pugi::xml_document document;
    make_document(document);
    std::string our_text;
    std::string peer_text;
    report("serialize", bench::measure_in_turns(
                            repeats,
                            [&] {
                                std::ostringstream out;
                                tree.serialize(out);
                                our_text = std::move(out).str();
                            },
                            [&] {
                                std::ostringstream out;
                                document.save(out, L"", pugi::format_raw);
                                peer_text = std::move(out).str();
                            }));
    std::unique_ptr<serializer::document> our_copy;
    pugi::xml_document peer_copy;
    report("deserialize", bench::measure_in_turns(
                              repeats,
                              [&] {
                                  std::istringstream in(our_text);
                                  auto read = std::make_unique<serializer::document>();
                                  read->root().deserialize(in);
                                  our_copy = std::move(read);
                              },
                              [&] {
                                  std::istringstream in(peer_text);
                                  peer_copy.load(in);
                              }));
    std::ostringstream again;
    peer_copy.save(again, L"", pugi::format_raw);
    if (our_copy->root() != tree || again.str() != peer_text) {
        throw std::runtime_error("a tree lost nodes");
    }
}

} // namespace

int wmain() {
    return bench::run(&measure);
}
