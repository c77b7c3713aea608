// The model framework: refusals of the bases, events and the factory.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Provider/ProviderException.h>

#include "ComputerSystem.h"
#include "Delegate.h"
#include "Model.h"
#include "ModelFactory.h"
#include "NonToplevelComputerSystem.h"
#include "Submodel.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

template <class F>
std::string notSupportedText(F call) {
    try {
        call();
    } catch (const CIMException& e) {
        EXPECT_EQ(CIM_ERR_NOT_SUPPORTED, e.getCode());
        return e.getMessage().toUtf8();
    }
    return "no exception";
}

TEST(ModelBase, EveryOperationOfTheBasesRefusesWithItsOwnText) {
    OperationContext context;
    DataEventArgs args(context, nullptr, nullptr, "A");
    CIMObjectPath parent;
    ParentArgs parentArgs(args, parent);
    Model model;
    Submodel submodel;
    CIMObjectPath out;
    EXPECT_EQ("Create function not support", notSupportedText([&] { model.Create(&args); }));
    EXPECT_EQ("Delete function not support", notSupportedText([&] { model.Delete(&args); }));
    EXPECT_EQ("Modify function not support", notSupportedText([&] { model.Modify(&args); }));
    EXPECT_EQ("Find function not support", notSupportedText([&] { model.Find("k", "A", out); }));
    EXPECT_EQ("Create function not support", notSupportedText([&] { submodel.Create(parentArgs); }));
    EXPECT_EQ("Delete function not support", notSupportedText([&] { submodel.Delete(parentArgs); }));
    EXPECT_EQ("Modify function not support", notSupportedText([&] { submodel.Modify(parentArgs); }));
}

std::vector<std::string>* g_calls = nullptr;
void first(ParentArgs& args) { g_calls->push_back("first " + args.arrayId); }
void second(ParentArgs& args) { g_calls->push_back("second " + args.path.getClassName().getString().toUtf8()); }
void throwing(ParentArgs&) { throw std::runtime_error("handler failed"); }

TEST(ModelDelegate, HandlersRunInOrderOfAddingAndAThrowEndsTheFiring) {
    std::vector<std::string> calls;
    g_calls = &calls;
    OperationContext context;
    DataEventArgs args(context, nullptr, nullptr, "A");
    CIMObjectPath path(String(), CIMNamespaceName(), CIMName("X_Parent"));
    ParentArgs parentArgs(args, path);

    ModelEvent event;
    event.Invoke(parentArgs);  // nobody subscribed: nothing happens
    EXPECT_TRUE(calls.empty());

    (event += second) += first;
    event.Add(second);
    event.Invoke(parentArgs);
    EXPECT_EQ((std::vector<std::string>{"second X_Parent", "first A", "second X_Parent"}), calls);

    calls.clear();
    ModelEvent failing;
    failing += first;
    failing += throwing;
    failing += second;
    EXPECT_THROW(failing.Invoke(parentArgs), std::runtime_error);
    EXPECT_EQ(std::vector<std::string>{"first A"}, calls);

    failing.Clear();
    EXPECT_EQ(0u, failing.Size());
    g_calls = nullptr;
}

TEST(ModelFactoryTest, GivesTheModelOfEachBuiltTypeAndNullForOthers) {
    std::unique_ptr<Model> array(ModelFactory::CreateModel(0));
    std::unique_ptr<Model> dac(ModelFactory::CreateModel(1));
    EXPECT_NE(nullptr, dynamic_cast<ComputerSystem*>(array.get()));
    EXPECT_NE(nullptr, dynamic_cast<NonToplevelComputerSystem*>(dac.get()));
    for (int type : {-1, 4, 10, 1000}) EXPECT_EQ(nullptr, ModelFactory::CreateModel(type)) << type;
}

}  // namespace
