#include "dialogs/sync/binding_plan.h"

#include <algorithm>

namespace dialogs {

namespace {

bool same_ends(const syncer::binding& left, const syncer::binding& right) {
    return left.dir_remote == right.dir_remote && left.dir_local == right.dir_local &&
           left.filename == right.filename;
}

bool same(const syncer::binding& left, const syncer::binding& right) {
    return same_ends(left, right) && left.rule == right.rule;
}

/// For an item that was changed by others meanwhile.
binding_plan merge(const std::vector<syncer::binding>& shown,
                   const std::vector<syncer::binding>& now, const sync_wish& wish) {
    if (!wish.permanent && !wish.permanent_touched) {
        return binding_plan::keep;
    }
    if (wish.permanent_touched || shown.size() != 1 || now.size() != 1) {
        return binding_plan::conflict;
    }
    const bool choice_clashes = wish.choice_touched && shown.front().rule != now.front().rule;
    const bool path_clashes = wish.path_touched && !same_ends(shown.front(), now.front());
    return choice_clashes || path_clashes ? binding_plan::conflict : binding_plan::replace;
}

} // namespace

bool is_backup(const syncer::binding_rule& rule) noexcept {
    constexpr int not_allowed = 1;
    return rule.can_download == not_allowed || rule.can_overwrite_download == not_allowed ||
           rule.can_remove_remote == not_allowed || rule.can_remove_remote_dir == not_allowed ||
           rule.can_remove_local == not_allowed || rule.can_remove_local_dir == not_allowed;
}

binding_plan plan_bindings(const std::vector<syncer::binding>& shown,
                           const std::vector<syncer::binding>& now, const sync_wish& wish) {
    if (!std::ranges::equal(shown, now, same)) {
        return merge(shown, now, wish);
    }
    if (wish.permanent) {
        return binding_plan::replace;
    }
    // Of several items the box is clear by itself, whatever their bindings are.
    return wish.permanent_touched ? binding_plan::remove : binding_plan::keep;
}

} // namespace dialogs
