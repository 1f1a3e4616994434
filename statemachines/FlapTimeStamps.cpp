#include "statemachines/LinkFlapProfileSm.h"

// The queue of flap times, as the attribute `linkFlapTimeStamp` of a profile machine.

namespace LinkFlap {

void LinkFlapProfileSm::linkFlapTimeStampEnq(double const& time) {
  linkFlapTimeStamp_.enq(time);
}

double LinkFlapProfileSm::linkFlapTimeStampDeq() {
  return linkFlapTimeStamp_.deq();
}

double LinkFlapProfileSm::linkFlapTimeStamp(std::uint32_t index) const {
  VekLinkFlapTimeStamp const* const entry = linkFlapTimeStamp_.find(index);
  return entry == nullptr ? 0.0 : entry->time();
}

void LinkFlapProfileSm::linkFlapTimeStampIs(std::uint32_t index, double const& time) {
  linkFlapTimeStamp_.valueIs(index, time);
}

Vek::Ptr<LinkFlapProfileSm::VekLinkFlapTimeStamp> LinkFlapProfileSm::newLinkFlapTimeStamp(
    std::uint32_t index, double const& time) {
  return linkFlapTimeStamp_.newMember(index, time);
}

double LinkFlapProfileSm::linkFlapTimeStampDel(std::uint32_t index) {
  return linkFlapTimeStamp_.del(index);
}

void LinkFlapProfileSm::linkFlapTimeStampDel(LinkFlapTimeStampQueue::Iterator& position) {
  linkFlapTimeStamp_.del(position);
}

void LinkFlapProfileSm::linkFlapTimeStampDelAll() {
  linkFlapTimeStamp_.clear();
}

/// Undoes the append that was the last change of the queue.
void LinkFlapProfileSm::linkFlapTimeStampTakeBack() noexcept {
  auto const* const newest = linkFlapTimeStamp_.tail();
  if (newest == nullptr) return;  // a trace sink may have emptied it
  std::uint32_t const index = newest->vek_index();
  (void)linkFlapTimeStamp_.delTail();  // by its place: another may have its index
  auto metadata = linkFlapTimeStamp_.metadata();
  metadata.nextIndex = index;
  if (linkFlapTimeStamp_.count() == 0) metadata.headIndex = index;
  linkFlapTimeStamp_.metadataIs(metadata);
}

void LinkFlapProfileSm::linkFlapTimeStampMetadataIs(LinkFlapTimeStampMetadata const& metadata) {
  linkFlapTimeStamp_.metadataIs(metadata);
}

}  // namespace LinkFlap
