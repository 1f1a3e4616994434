#include "runtime/model/StateTypes.h"
#include "runtime/vek/TextConversion.h"

#include "statemachines/LinkFlapSm.h"

// References to the four machines from text, for tools that link the library.

namespace Vek {

template Ptr<LinkFlap::Root> sequenceToValue<Ptr<LinkFlap::Root>>(char const*&, char const*);
template Ptr<LinkFlap::LinkFlapSm> sequenceToValue<Ptr<LinkFlap::LinkFlapSm>>(char const*&,
                                                                              char const*);
template Ptr<LinkFlap::LinkFlapIntfSm> sequenceToValue<Ptr<LinkFlap::LinkFlapIntfSm>>(char const*&,
                                                                                      char const*);
template Ptr<LinkFlap::LinkFlapProfileSm> sequenceToValue<Ptr<LinkFlap::LinkFlapProfileSm>>(
    char const*&, char const*);

template Ptr<LinkFlap::Root> strepToValue<Ptr<LinkFlap::Root>>(std::string_view);
template Ptr<LinkFlap::LinkFlapSm> strepToValue<Ptr<LinkFlap::LinkFlapSm>>(std::string_view);
template Ptr<LinkFlap::LinkFlapIntfSm> strepToValue<Ptr<LinkFlap::LinkFlapIntfSm>>(
    std::string_view);
template Ptr<LinkFlap::LinkFlapProfileSm> strepToValue<Ptr<LinkFlap::LinkFlapProfileSm>>(
    std::string_view);

}  // namespace Vek
