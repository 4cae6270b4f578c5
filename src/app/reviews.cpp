#include "app/reviews.h"

#include <ranges>
#include <utility>

namespace zembrastel {
namespace {

template <class Value>
void assign(std::map<Uuid, Value>& values, const Uuid& id, const Value* value) {
    if (value != nullptr) {
        values.insert_or_assign(id, *value);
    } else {
        values.erase(id);
    }
}

} // namespace

const RemoteReview* Reviews::postponed(const Uuid& id) const {
    const auto found = postponedReviews.find(id);
    return found == postponedReviews.end() ? nullptr : &found->second;
}

const PathSet& Reviews::missing(const Uuid& id) const {
    static const PathSet none;
    const auto found = questions.find(id);
    return found == questions.end() ? none : found->second.missing;
}

void Reviews::publish(const Uuid& id, const RemoteReview* ofJob, const std::string* failure) {
    const RemoteReview* const review = ofJob != nullptr ? ofJob : postponed(id);
    assign(reviews, id, review);
    assign(checkFailures, id, failure);
    const bool isOver = review == nullptr || (shown && review->reviewId != shown->reviewId);
    if (shown && shown->id == id && isOver) present(std::nullopt);
    observers.notify([&id](ModelObserver& observer) { observer.reviewChanged(id); });
}

void Reviews::open(const Uuid& id) {
    const auto found = reviews.find(id);
    present(found == reviews.end() ? std::nullopt : std::optional(found->second));
}

void Reviews::close() {
    if (shown) present(std::nullopt);
}

void Reviews::presentNext() {
    // Ids compare as their texts do, so the same set of reviews always comes up in the same order.
    if (!shown && !reviews.empty()) present(reviews.begin()->second);
}

void Reviews::present(std::optional<RemoteReview> review) {
    shown = std::move(review);
    observers.notify([](ModelObserver& observer) { observer.presentedReviewChanged(); });
}

PathSet pathsOf(const std::vector<RemoteChange>& changes) {
    PathSet paths;
    for (const auto& change : changes) paths.insert(change.path);
    return paths;
}

std::string listedPaths(const PathSet& paths) {
    constexpr std::size_t max = 10;
    std::string text;
    for (const auto& path : paths | std::views::take(max)) text += (text.empty() ? "" : ", ") + path;
    return paths.size() > max ? text + " and " + std::to_string(paths.size() - max) + " more" : text;
}

} // namespace zembrastel
