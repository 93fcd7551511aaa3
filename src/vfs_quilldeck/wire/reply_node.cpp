#include "vfs_quilldeck/wire/reply_node.h"

#include "vfs_quilldeck/wire/exceptions.h"

#include <limits>
#include <utility>

namespace vfs_quilldeck {

/// Walks the text once, from the front, and keeps the elements that are still open on a stack of
/// its own, so that no depth of a reply can exhaust the thread's stack.
class reply_node::parser {
public:
    explicit parser(document& target) : target_(target), text_(target.text) {}

    void run() {
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
    std::size_t find_bracket(wchar_t bracket, std::size_t from) const {
        std::size_t at = text_.find(bracket, from);
        while (at != std::wstring::npos && at > from && text_[at - 1] == L'\\') {
            at = text_.find(bracket, at + 1);
        }
        if (at == std::wstring::npos) {
            throw exception(L"Parse error", L"Server side error");
        }
        return at;
    }

    tag read_tag(std::size_t from) const {
        const std::size_t start = find_bracket(L'<', from);
        const std::size_t end = find_bracket(L'>', start);
        return {start, end, end - start > 1 && text_[start + 1] == L'/'};
    }

    void open_element(const tag& found) {
        const auto name_at = static_cast<std::uint32_t>(found.start + 1);
        target_.records.push_back({name_at, unescape(found.start + 1, found.end), 0, 0, 0});
        open_.push_back({target_.records.size() - 1, found.end + 1});
        from_ = found.end + 1;
    }

    void close_element(const tag& found) {
        const open_record last = open_.back();
        open_.pop_back();
        record& element = target_.records[last.index];
        element.end = static_cast<std::uint32_t>(target_.records.size());
        if (element.end == last.index + 1) {
            element.text_at = static_cast<std::uint32_t>(last.text_from);
            element.text_size = unescape(last.text_from, found.start);
        }
        from_ = found.end + 1;
    }

    /// Takes the backslashes before angle brackets out of [from, to) in place, and answers the
    /// length that is left. What lies behind `from` has been searched already.
    std::uint32_t unescape(std::size_t from, std::size_t to) {
        std::size_t write = from;
        for (std::size_t read = from; read < to; ++read) {
            if (text_[read] == L'\\' && read + 1 < to &&
                (text_[read + 1] == L'<' || text_[read + 1] == L'>')) {
                ++read;
            }
            text_[write++] = text_[read];
        }
        return static_cast<std::uint32_t>(write - from);
    }

    struct open_record {
        std::size_t index;
        std::size_t text_from;
    };

    document& target_;
    std::wstring& text_;
    std::vector<open_record> open_;
    std::size_t from_ = 0;
};

reply_node reply_node::parse(std::wstring text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        throw exception(L"Parse error", L"Server side error");
    }
    auto parsed = std::make_shared<document>();
    parsed->text = std::move(text);
    parser(*parsed).run();
    return {std::move(parsed), 0};
}

std::wstring_view reply_node::name_of(const record& element) const {
    return std::wstring_view(owner_->text).substr(element.name_at, element.name_size);
}

std::wstring_view reply_node::text_of(const record& element) const {
    return std::wstring_view(owner_->text).substr(element.text_at, element.text_size);
}

std::wstring_view reply_node::name() const {
    return name_of(self());
}

std::wstring_view reply_node::text() const {
    return text_of(self());
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
        if (name_of(child) == name) {
            return std::wstring(text_of(child));
        }
    }
    return {};
}

std::vector<reply_node> reply_node::get_children(std::wstring_view name) const {
    std::vector<reply_node> found;
    for (std::size_t i = index_ + 1; i < self().end; i = owner_->records[i].end) {
        const record& child = owner_->records[i];
        if (child.end != i + 1 && name_of(child) == name) {
            found.push_back(reply_node(owner_, i));
        }
    }
    return found;
}

} // namespace vfs_quilldeck
