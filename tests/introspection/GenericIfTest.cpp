#include <gtest/gtest.h>
#include <string>

#include "runtime/vek/Activity.h"

#include "tests/introspection/support/Machines.h"

// What the views of all four types have in common.

namespace {

using namespace IntrospectionTest;

class View : public EachView {};

INSTANTIATE_TEST_SUITE_P(Of, View, viewedTypes(), bareNameOf);

TEST_P(View, HasTheRecordOfItsType) {
  EXPECT_EQ(&view->type(), &record);
  EXPECT_EQ(view->type().bareName(), GetParam().bareName);
}

TEST_P(View, HoldsItsObject) {
  std::uint32_t const before = object->referenceCount();
  auto const another = GetParam().view(machines, true);
  EXPECT_EQ(another->object().get(), object);
  EXPECT_EQ(object->referenceCount(), before + 1);
}

TEST_P(View, TranslatesNamesAndIdentifiers) {
  for (auto const& attr : record.attrs()) {
    EXPECT_EQ(view->attributeId(attr->name), attr->id);
    EXPECT_EQ(view->attributeString(attr->id), attr->name);
  }
}

// A name that the type does not declare is looked up in its base.
TEST_P(View, FallsBackToTheBaseForNamesAndIdentifiers) {
  EXPECT_EQ(view->attributeId("hasNotificationActive"), 2U);
  EXPECT_EQ(view->attributeId("vekMarkedForDeletion"), 3U);
  EXPECT_EQ(view->attributeId("referenceCount"), 4U);
  EXPECT_EQ(view->attributeString(2), "hasNotificationActive");
  EXPECT_EQ(view->attributeString(3), "vekMarkedForDeletion");
  EXPECT_EQ(view->attributeString(4), "referenceCount");
}

TEST_P(View, AnswersWithZeroAndWithTheEmptyNameForWhatThereIsNot) {
  EXPECT_EQ(view->attributeId("noSuchAttribute"), 0U);
  EXPECT_EQ(view->attributeId(""), 0U);
  EXPECT_EQ(view->attributeString(0), "");
  EXPECT_EQ(view->attributeString(9999), "");
}

TEST_P(View, HandsOperationsOnTheBasesAttributesToTheBase) {
  EXPECT_EQ(get(*view, "referenceCount"), Vek::Value{object->referenceCount()});
  EXPECT_EQ(get(*view, "hasNotificationActive"), Vek::Value{object->hasNotificationActive()});
  EXPECT_EQ(get(*view, "vekMarkedForDeletion"), Vek::Value{false});
  EXPECT_EQ(thrownBy([&] { set(*view, "referenceCount", Vek::Value{1U}); }),
            "Vek::Exception 6: operation 2 is not supported on attribute referenceCount");
}

TEST_P(View, RefusesAnAttributeThatThereIsNot) {
  Vek::Value result{true};
  for (auto const code :
       {OpCode::get, OpCode::set, OpCode::call, OpCode::instantiate, OpCode::del, OpCode::size})
    EXPECT_EQ(thrownBy([&] {
                view->attributeOp({9999, code, {}}, {}, result);
              }),
              "Vek::Exception 4: unknown argument 9999");
  EXPECT_EQ(result, Vek::Value{true});
  EXPECT_EQ(thrownBy([&] { (void)view->attributeIteratorConst(9999); }),
            "Vek::Exception 4: unknown argument 9999");
  EXPECT_EQ(thrownBy([&] { (void)view->attributeIteratorKeyConst(9999, text("a")); }),
            "Vek::Exception 4: unknown argument 9999");
}

TEST_P(View, ClonesToANewViewOfTheSameObject) {
  for (Vek::GenericIf const* const original : {view.get(), readOnly.get()}) {
    std::uint32_t const before = object->referenceCount();
    auto const clone = original->clone();
    EXPECT_NE(clone.get(), original);
    Vek::GenericIf const& made = *clone;
    EXPECT_EQ(typeid(made), typeid(*original));
    EXPECT_EQ(clone->object(), original->object());
    EXPECT_EQ(clone->readOnly(), original->readOnly());
    EXPECT_EQ(&clone->type(), &original->type());
    EXPECT_EQ(object->referenceCount(), before + 1);
  }
}

TEST_P(View, ACloneOutlivesTheViewItWasMadeFrom) {
  auto const clone = view->clone();
  view = nullptr;
  EXPECT_EQ(clone->object().get(), object);
  EXPECT_EQ(get(*clone, "vekMarkedForDeletion"), Vek::Value{false});
}

TEST_P(View, GivesTheObjectAsAnUntypedPointerToItsTypeAndItsBases) {
  EXPECT_EQ(view->voidPtrIs(record), dynamic_cast<void const*>(object));
  EXPECT_EQ(view->voidPtrIs(Vek::ptrInterfaceType()),
            static_cast<Vek::PtrInterface const*>(object));
  EXPECT_EQ(readOnly->voidPtrIs(record), dynamic_cast<void const*>(object));
}

TEST_P(View, RefusesThePointerForAForeignType) {
  std::string const refused = "Vek::TypeException 3: " + std::string{GetParam().bareName};
  for (Vek::VekType const* const foreign :
       {LinkFlap::Root::_fwkType(), LinkFlap::LinkFlapSm::_fwkType(),
        LinkFlap::LinkFlapIntfSm::_fwkType(), LinkFlap::LinkFlapProfileSm::_fwkType(),
        machines.sw.config->fwkType(), machines.sw.activity->fwkType()}) {
    if (foreign == &record) continue;
    EXPECT_EQ(thrownBy([&] { (void)view->voidPtrIs(*foreign); }), refused) << foreign->fullName();
  }
}

// Only the Root is an entity.
TEST_P(View, GivesThePointerForEntityToTheRootAlone) {
  if (GetParam().bareName == "Root") {
    Vek::Entity const* const entity = machines.sw.root.get();
    EXPECT_EQ(view->voidPtrIs(Vek::entityType()), entity);
  } else {
    EXPECT_EQ(thrownBy([&] { (void)view->voidPtrIs(Vek::entityType()); }),
              "Vek::TypeException 3: " + std::string{GetParam().bareName});
  }
}

TEST_P(View, ForwardsTheSwitchOfNotifications) {
  for (bool const on : {false, true, false, true}) {
    view->hasNotificationActiveIs(on);
    EXPECT_EQ(object->hasNotificationActive(), on);
  }
}

TEST_P(View, AViewOfAnyObjectIsTheSame) {
  auto const any = Vek::genericIfOf(Vek::Ptr<Vek::PtrInterface const>{object}, false);
  EXPECT_EQ(&any->type(), &record);
  EXPECT_EQ(any->object().get(), object);
  EXPECT_EQ(any->clone()->object().get(), object);
  EXPECT_EQ(any->voidPtrIs(record), view->voidPtrIs(record));
}

class ViewOperations : public EachView {};

INSTANTIATE_TEST_SUITE_P(Of, ViewOperations, viewedTypes(), bareNameOf);

/// Every operation on every attribute, those of the base included.
template <typename Check>
void forEachOperation(Vek::VekType const& record, Check check) {
  for (Vek::VekType const* type = &record; type != nullptr; type = type->base())
    for (auto const& attr : type->attrs())
      for (auto const code :
           {OpCode::get, OpCode::set, OpCode::call, OpCode::instantiate, OpCode::del, OpCode::size})
        check(*attr, code);
}

bool supports(Vek::VekAttr const& attr, OpCode code, bool indexed) {
  switch (code) {
    case OpCode::get:
      return indexed ? attr.member != nullptr : attr.read != nullptr;
    case OpCode::set:
      return indexed ? attr.memberWrite != nullptr : attr.write != nullptr;
    case OpCode::del:
      return indexed ? attr.memberDel != nullptr : attr.del != nullptr;
    case OpCode::call:
      return !indexed && attr.call != nullptr;
    case OpCode::instantiate:
      return !indexed && attr.instantiate != nullptr;
    case OpCode::size:
      return !indexed && attr.size != nullptr;
  }
  return false;
}

// Which operations there are to support is held by MachineTypesTest; here, that all others fail.
TEST_P(ViewOperations, RefusesEveryOperationThatTheAttributeDoesNotSupport) {
  unsigned refused = 0;
  forEachOperation(record, [&](Vek::VekAttr const& attr, OpCode code) {
    if (supports(attr, code, false)) return;
    ++refused;
    EXPECT_EQ(thrownBy([&] { operate(*view, code, attr.name, {}, {}); }),
              "Vek::Exception 6: operation " + std::to_string(static_cast<unsigned>(code)) +
                  " is not supported on attribute " + std::string{attr.name});
  });
  EXPECT_GT(refused, 30U);
}

TEST_P(ViewOperations, RefusesAnIndexWhereThereIsNone) {
  forEachOperation(record, [&](Vek::VekAttr const& attr, OpCode code) {
    if (attr.keyType != nullptr) return;
    EXPECT_EQ(thrownBy([&] { operate(*view, code, attr.name, text("1"), {}); }),
              "Vek::Exception 7: attribute " + std::string{attr.name} + " has no index");
  });
}

TEST_P(ViewOperations, RefusesOperationsThatAMemberDoesNotSupport) {
  forEachOperation(record, [&](Vek::VekAttr const& attr, OpCode code) {
    if (attr.keyType == nullptr || supports(attr, code, true)) return;
    EXPECT_EQ(thrownBy([&] { operate(*view, code, attr.name, text("1"), {}); }),
              "Vek::Exception 6: operation " + std::to_string(static_cast<unsigned>(code)) +
                  " is not supported on a member of attribute " + std::string{attr.name});
  });
}

TEST_P(ViewOperations, RefusesAWalkOverWhatHasNoMembers) {
  forEachOperation(record, [&](Vek::VekAttr const& attr, OpCode /*code*/) {
    if (attr.iterate != nullptr) return;
    std::string const refused =
        "Vek::Exception 7: attribute " + std::string{attr.name} + " has no index";
    EXPECT_EQ(thrownBy([&] { (void)view->attributeIteratorConst(attr.id); }), refused);
    EXPECT_EQ(thrownBy([&] { (void)view->attributeIteratorKeyConst(attr.id, text("1")); }),
              refused);
  });
}

// Whatever the attribute, whatever the arguments: refused before anything is looked at.
TEST_P(ViewOperations, AReadOnlyViewRefusesEveryChange) {
  unsigned refused = 0;
  forEachOperation(record, [&](Vek::VekAttr const& attr, OpCode code) {
    if (code == OpCode::get || code == OpCode::size) return;
    ++refused;
    for (List const& arguments : {List{}, List{text("1")}, List{Vek::Value{true}, text("x")}}) {
      EXPECT_EQ(thrownBy([&] { operate(*readOnly, code, attr.name, {}, arguments); }), kConst);
      EXPECT_EQ(thrownBy([&] { operate(*readOnly, code, attr.name, text("1"), arguments); }),
                kConst);
    }
  });
  EXPECT_GT(refused, 20U);
  EXPECT_EQ(thrownBy([&] { readOnly->hasNotificationActiveIs(false); }), kConst);
  EXPECT_TRUE(object->hasNotificationActive() || GetParam().bareName == "Root");
}

TEST_P(ViewOperations, AReadOnlyViewReadsLikeAnother) {
  EXPECT_TRUE(readOnly->readOnly());
  EXPECT_FALSE(view->readOnly());
  for (Vek::VekType const* type = &record; type != nullptr; type = type->base()) {
    for (auto const& attr : type->attrs()) {
      if (attr->read != nullptr) {
        EXPECT_EQ(get(*readOnly, attr->name), get(*view, attr->name));
      }
      if (attr->size != nullptr) {
        EXPECT_EQ(size(*readOnly, attr->name), size(*view, attr->name));
      }
      if (attr->iterate == nullptr) continue;
      auto ours = readOnly->attributeIteratorConst(attr->id);
      auto theirs = view->attributeIteratorConst(attr->id);
      for (; ours->nonNull(); ours->inc(), theirs->inc())
        EXPECT_EQ(get(*readOnly, attr->name, ours->key()), theirs->obj());
      EXPECT_FALSE(theirs->nonNull());
    }
  }
}

TEST(ViewOfAnyObject, NeedsATypeRecord) {
  class Plain final : public Vek::PtrInterface {
    ~Plain() override = default;
  };
  EXPECT_EQ(thrownBy([] { (void)Vek::genericIfOf(nullptr, false); }),
            "Vek::RangeException 1: the object has no type record");
  EXPECT_EQ(thrownBy([] { (void)Vek::genericIfOf(Vek::make<Plain>(), false); }),
            "Vek::RangeException 1: the object has no type record");
}

}  // namespace
