#include "tools/scenario/TraceLines.h"

#include <charconv>
#include <cstdint>
#include <utility>

#include "statemachines/LinkFlapProfileSm.h"

namespace Scenario {

namespace {

constexpr std::string_view kHex{"0x"};

}  // namespace

TraceLines::TraceLines(Output& out)
    : out_{out}, previous_{Vek::traceSinkIs([this](Vek::TraceRecord const& record) {
        print(record);
      })} {}

TraceLines::~TraceLines() {
  Vek::traceSinkIs(std::move(previous_));
}

void TraceLines::print(Vek::TraceRecord const& record) {
  if (!record.levelFlag) return;
  std::string_view const message = record.message;
  auto const plain = [&] {
    out_.line("T ", record.level, ' ', record.line, ' ', record.function, ' ', message);
  };

  // A message that begins with an address comes from the profile machine that stands there. An
  // address differs from run to run, what stands there does not.
  // Trap: only here and now is the machine sure to be found: a constructor traces before any
  // collection holds its machine, and when the command ends the machine may be gone.
  if (!message.starts_with(kHex)) return plain();
  auto const* const digits = message.data() + kHex.size();
  std::uintptr_t address{0};
  auto const [end, error] =
      std::from_chars(digits, message.data() + message.size(), address, /*base=*/16);
  auto const rest = message.substr(static_cast<std::size_t>(end - message.data()));
  if (error != std::errc{} || !rest.starts_with("::")) return plain();
  auto const* const sm = reinterpret_cast<LinkFlap::LinkFlapProfileSm const*>(address);
  Tarn::IntfId const intf = sm->ethPhyIntfStatus() ? sm->intfId() : Tarn::IntfId{"-"};
  out_.line("T ", record.level, ' ', record.line, ' ', record.function, " @", intf, '/',
            sm->profileName(), rest);
}

}  // namespace Scenario
