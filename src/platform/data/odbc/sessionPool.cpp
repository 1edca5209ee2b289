#include "platform/data/odbc/sessionPool.h"

#include <algorithm>
#include <vector>

namespace qrel::odbc {

namespace {

constexpr std::ptrdiff_t mostAlike = 4;
constexpr std::size_t mostKept = 16;
constexpr auto moment = std::chrono::seconds(1);

bool isFor(const Session& session, const Opening& opening) {
  return session.opening().text == opening.text && session.opening().target.token == opening.target.token;
}

}  // namespace

std::shared_ptr<Session> SessionPool::takeKept(const Opening& opening) {
  std::shared_ptr<Session> found;  // those that go are closed behind the lock
  std::vector<std::shared_ptr<Session>> gone;
  const std::lock_guard lock(mutex_);
  for (auto each = kept_.end(); each != kept_.begin() && !found;) {
    const auto candidate = std::prev(each);
    const bool fits = isFor(**candidate, opening);
    if (!fits && !(*candidate)->dead) {
      each = candidate;
      continue;
    }
    if (fits && (*candidate)->worker().claim() && !(*candidate)->dead)
      found = std::move(*candidate);
    else
      gone.push_back(std::move(*candidate));
    each = kept_.erase(candidate);
  }
  return found;
}

std::shared_ptr<Session> SessionPool::take(const std::shared_ptr<Environment>& environment, const Opening& opening,
                                           int keepSeconds) {
  while (auto kept = takeKept(opening)) {
    kept->proved = false;
    if (std::chrono::steady_clock::now() - kept->givenBack >= moment) {
      if (!kept->answers(opening.stopAsked)) continue;
      kept->proved = true;
    }
    return lease(std::move(kept), keepSeconds);
  }
  return lease(Session::open(environment, opening), keepSeconds);
}

std::shared_ptr<Session> SessionPool::open(const std::shared_ptr<Environment>& environment, const Opening& opening,
                                           int keepSeconds) {
  while (takeKept(opening)) continue;
  return lease(Session::open(environment, opening), keepSeconds);
}

std::shared_ptr<Session> SessionPool::lease(std::shared_ptr<Session> session, int keepSeconds) {
  Session* const used = session.get();
  return {used, [pool = weak_from_this(), owned = std::move(session), keepSeconds](Session*) mutable {
            if (const auto alive = pool.lock()) alive->giveBack(std::move(owned), keepSeconds);
            owned.reset();
          }};
}

void SessionPool::giveBack(std::shared_ptr<Session> session, int keepSeconds) {
  if (session->dead || session->busy || keepSeconds <= 0) return;
  // What one command has set must not meet the next one.
  if (session->touched && !session->reset()) return;
  session->touched = false;
  session->givenBack = std::chrono::steady_clock::now();
  std::vector<std::shared_ptr<Session>> gone;
  const std::lock_guard lock(mutex_);
  const auto alike =
      std::count_if(kept_.begin(), kept_.end(), [&](const auto& each) { return isFor(*each, session->opening()); });
  if (alike >= mostAlike) return;
  session->expireAfter(std::chrono::seconds(keepSeconds));
  kept_.push_back(std::move(session));
  if (kept_.size() > mostKept) {
    gone.push_back(std::move(kept_.front()));
    kept_.pop_front();
  }
}

}  // namespace qrel::odbc
