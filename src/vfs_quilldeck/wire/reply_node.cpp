#include "vfs_quilldeck/wire/reply_node.h"

#include "vfs_quilldeck/wire/byte_scan.h"
#include "vfs_quilldeck/wire/exceptions.h"
#include "vfs_quilldeck/wire/text_encoding.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace vfs_quilldeck {

namespace {

/// What bytes of the reply mean.
std::wstring decode(std::string_view raw) {
    std::wstring text = utf8_to_wide(raw);
    if (raw.find('\\') == std::string_view::npos) {
        return text;
    }
    auto write = text.begin();
    for (auto read = text.begin(); read != text.end(); ++read) {
        if (*read == L'\\' && read + 1 != text.end() && (read[1] == L'<' || read[1] == L'>')) {
            ++read;
        }
        *write++ = *read;
    }
    text.erase(write, text.end());
    return text;
}

shared_reply copy_of(std::string_view bytes) {
    reply_buffer copy;
    if (!copy.append(bytes.data(), bytes.size())) {
        throw std::bad_alloc();
    }
    return std::make_shared<const reply_buffer>(std::move(copy));
}

} // namespace

/// Walks the bytes once, from the front, and keeps the elements that are still open on a stack of
/// its own, so that no depth of a reply can exhaust the thread's stack.
class reply_node::parser {
public:
    explicit parser(document& target) : target_(target), text_(target.bytes->view()) {}

    void run() {
        // One block for all of them: a vector that grows is copied to fresh memory again and again.
        target_.records.reserve(static_cast<std::size_t>(std::ranges::count(text_, '<')) / 2 + 1);
        open_element(read_tag(0));
        while (!open_.empty()) {
            const tag next = read_tag(from_);
            if (next.closing) {
                close_element(next);
            } else {
                open_element(next);
            }
        }
    }

private:
    struct tag {
        std::size_t start;
        std::size_t end;
        bool closing;
    };

    /// An angle bracket directly behind a backslash does not count, unless the search starts at it.
    std::size_t find_bracket(char bracket, std::size_t from) const {
        std::size_t at = find_byte(text_, bracket, from);
        while (at < text_.size() && at > from && text_[at - 1] == '\\') {
            at = find_byte(text_, bracket, at + 1);
        }
        if (at >= text_.size()) {
            throw exception(L"Parse error", L"Server side error");
        }
        return at;
    }

    tag read_tag(std::size_t from) const {
        const std::size_t start = find_bracket('<', from);
        const std::size_t end = find_bracket('>', start);
        return {start, end, end - start > 1 && text_[start + 1] == '/'};
    }

    void open_element(const tag& found) {
        const auto name_at = static_cast<std::uint32_t>(found.start + 1);
        const auto name_size = static_cast<std::uint32_t>(found.end - found.start - 1);
        open_.push_back(static_cast<std::uint32_t>(target_.records.size()));
        target_.records.push_back({name_at, name_size, 0, 0});
        target_.plain_names = target_.plain_names && is_plain(text_.substr(name_at, name_size));
        from_ = found.end + 1;
    }

    void close_element(const tag& found) {
        const std::uint32_t index = open_.back();
        open_.pop_back();
        record& element = target_.records[index];
        element.end = static_cast<std::uint32_t>(target_.records.size());
        if (element.end == index + 1) {
            element.text_size =
                static_cast<std::uint32_t>(found.start) - element.name_at - element.name_size - 1;
        }
        from_ = found.end + 1;
    }

    document& target_;
    std::string_view text_;
    std::vector<std::uint32_t> open_;
    std::size_t from_ = 0;
};

reply_node reply_node::parse(shared_reply bytes) {
    if (!is_regular_utf8(bytes->view())) {
        return parse(utf8_to_wide(bytes->view()));
    }
    if (bytes->view().size() > std::numeric_limits<std::uint32_t>::max()) {
        throw exception(L"Parse error", L"Server side error");
    }
    auto parsed = std::make_shared<document>();
    parsed->bytes = std::move(bytes);
    parser(*parsed).run();
    return {std::move(parsed), 0};
}

reply_node reply_node::parse(std::wstring_view text) {
    return parse(copy_of(units_to_utf8(text)));
}

std::string_view reply_node::raw_name_of(const record& element) const {
    return owner_->bytes->view().substr(element.name_at, element.name_size);
}

std::string_view reply_node::raw_text_of(const record& element) const {
    return owner_->bytes->view().substr(element.name_at + element.name_size + 1, element.text_size);
}

bool reply_node::has_name(const record& element, std::wstring_view name) const {
    const std::string_view raw = raw_name_of(element);
    if (owner_->plain_names) {
        return raw.size() == name.size() &&
               std::ranges::equal(raw, name, {}, [](char c) { return static_cast<wchar_t>(c); });
    }
    return decode(raw) == name;
}

std::wstring reply_node::name() const {
    return decode(raw_name_of(self()));
}

std::wstring reply_node::text() const {
    return decode(raw_text_of(self()));
}

bool reply_node::is_leaf() const {
    return self().end == index_ + 1;
}

std::vector<reply_node> reply_node::children() const {
    std::vector<reply_node> found;
    for (std::size_t i = index_ + 1; i < self().end; i = owner_->records[i].end) {
        found.push_back(reply_node(owner_, i));
    }
    return found;
}

std::wstring reply_node::get_child_text(std::wstring_view name) const {
    for (std::size_t i = index_ + 1; i < self().end; i = owner_->records[i].end) {
        const record& child = owner_->records[i];
        if (has_name(child, name)) {
            return decode(raw_text_of(child));
        }
    }
    return {};
}

std::vector<reply_node> reply_node::get_children(std::wstring_view name) const {
    std::vector<reply_node> found;
    for (std::size_t i = index_ + 1; i < self().end; i = owner_->records[i].end) {
        const record& child = owner_->records[i];
        if (child.end != i + 1 && has_name(child, name)) {
            found.push_back(reply_node(owner_, i));
        }
    }
    return found;
}

} // namespace vfs_quilldeck
