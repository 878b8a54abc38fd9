// The function contract as the host implements it: registration, argument checks, per-division
// calls and the assembly of their results.
#include "test_util.hpp"
#include "wavex/dynexport.hpp"
#include "wavex/version.hpp"

#include <gtest/gtest.h>

namespace wavex {
namespace {

using test::reals;
using test::Session;
using test::xs;

// Test handlers. Each returns what it saw, so the tests can check the host's view.

// Result: [length, numYDivisions, totalLength] of argument 0, with no reference.
FUNC_ERROR seeShape(WAVEX_HANDLER_PARAMS) {
    double* r = result->makeRealNoRef(3);
    r[0] = static_cast<double>(args.length(0));
    r[1] = args.numYDivisions(0);
    r[2] = static_cast<double>(args.totalLength(0));
    return FUNC_OK;
}

// Element-wise sum of two arguments over argument 0's x-values (ResultAllocType 0).
FUNC_ERROR addPairs(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    result->setPhysType(args.physType(0), args.refPhysType(0));
    result->setType(VD_REAL, VD_REAL);
    if (!result->allocate(n, RESULT_LIKE_ARGS, args.totalLength(0))) return FUNC_FAILED;
    const double* a = args.data(0);
    const double* b = args.data(1);
    int64_t m = args.length(1);
    for (int64_t i = 0; i < n; ++i) result->data()[i] = a[i] + b[m == 1 ? 0 : i];
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

// One value per call: the first element (ResultAllocType 1).
FUNC_ERROR firstValue(WAVEX_HANDLER_PARAMS) {
    result->setType(VD_REAL, VD_NONE);
    result->allocate(1, RESULT_OWN, -1);
    result->data()[0] = args.data(0)[0];
    return FUNC_OK;
}

// The first two elements of each division (ResultAllocType 2).
FUNC_ERROR firstTwo(WAVEX_HANDLER_PARAMS) {
    int64_t n = std::min<int64_t>(2, args.length(0));
    double* r = result->makeReal(n, RESULT_RESHAPED, -1);
    for (int64_t i = 0; i < n; ++i) r[i] = args.data(0)[i];
    return FUNC_OK;
}

// Fails with a message; the handler's reference to the sink is dropped on return.
FUNC_ERROR failLoudly(WAVEX_HANDLER_PARAMS) {
    messages->error("Argument out of range for function '%s'", info->name);
    return FUNC_FAILED;
}

FUNC_ERROR failQuietly(WAVEX_HANDLER_PARAMS) { return FUNC_FAILED; }

FUNC_ERROR warnButSucceed(WAVEX_HANDLER_PARAMS) {
    messages->error("x value out of range for function '%s'", info->name);
    result->makeRealNoRef(1)[0] = 7;
    return FUNC_OK;
}

// The copy of argument 0, without a MultiDef array: it sees the whole vector.
FUNC_ERROR copyWhole(WAVEX_HANDLER_PARAMS) {
    int64_t n = args.length(0);
    double* r = result->makeReal(n, RESULT_LIKE_ARGS, args.totalLength(0));
    std::copy(args.data(0), args.data(0) + n, r);
    result->copyRefFromArgs(args, RESULT_LIKE_ARGS, args.totalLength(0), 0);
    return FUNC_OK;
}

constexpr int kFirstTwoLine = __LINE__ + 9;
constexpr FuncInfo kTestFunctions[] = {
    {"_TestShapeEach", {arg::Numeric.each()}, 1, seeShape},
    {"_TestShapeAll", {arg::Numeric.all()}, 1, seeShape},
    {"_TestShapeJoined", {arg::Numeric.joined()}, 1, seeShape},
    {"_TestShapeWhole", {arg::Numeric}, 1, seeShape},
    {"_TestAddPairs", {arg::Real.each(), arg::Real.each()}, 2, addPairs, kPointwise},
    {"_TestAddFixed", {arg::Real.each(), arg::Real}, 2, addPairs},
    {"_TestFirstValue", {arg::Real.each()}, 1, firstValue},
    FuncInfo("_TestFirstTwo", {arg::Real.each()}, 1, firstTwo),  // kFirstTwoLine
    {"_TestFailLoudly", {arg::Numeric, arg::Numeric}, 0, failLoudly},
    {"_TestFailQuietly", {}, 0, failQuietly},
    {"_TestWarn", {}, 0, warnButSucceed},
    {"_TestCopyWhole", {arg::Real}, 1, copyWhole},
    {"_TestString", {arg::String}, 1, seeShape},
    {"_TestShapeOrText", {arg::Numeric.orKinds(VD_STRING)}, 1, seeShape},
};
const FuncFamily testFamily(kTestFunctions);
const FuncAlias testAlias("_TestShapeEach", "_TestShapeAlias");

// Three runs of a curve over time, labelled.
VectorPtr threeRuns() {
    auto v = std::make_shared<Vector>();
    v->real = {1, 2, 3, 10, 20, 100, 200, 300, 400};
    v->phys = units::Voltage;
    v->ref = Reference::fromReal({0, 1, 2, 0, 1, 0, 1, 2, 3}, units::Time, "time");
    v->setDivisionLengths({3, 2, 4});
    v->labels = {"R=1k", std::nullopt, "R=3k"};
    return v;
}

struct Framework : ::testing::Test {
    Session wx;
    void SetUp() override { wx.wx.setVector("runs", threeRuns()); }
};

TEST_F(Framework, LookupIgnoresCaseAndRecordsTheSourceLocation) {
    EXPECT_EQ(functionTable().find("_testaddpairs"), &kTestFunctions[4]);
    EXPECT_EQ(functionTable().find("_TestShapeAlias"), functionTable().find("_TestShapeEach"));

    bool found = false;
    for (const FuncLoc& loc : functionTable().locations())
        if (std::string_view(loc.name) == "_TestFirstTwo") {
            found = true;
            EXPECT_STREQ(loc.file, "tests/core/framework_test.cpp");  // relative to the project
            EXPECT_EQ(loc.line, kFirstTwoLine);
            EXPECT_EQ(loc.handler, &firstTwo);
        }
    EXPECT_TRUE(found);
}

TEST_F(Framework, RegistrationEndsWithItsObject) {
    static const FuncInfo scoped("_TestScoped", {arg::Any}, 0, failQuietly);
    {
        FuncDef def(scoped);
        FuncAlias alias("_TestScoped", "_TestScopedAlias");
        EXPECT_EQ(functionTable().find("_TESTSCOPEDALIAS"), &scoped);
    }
    EXPECT_EQ(functionTable().find("_TestScoped"), nullptr);
    EXPECT_EQ(functionTable().find("_TestScopedAlias"), nullptr);
}

TEST_F(Framework, HostChecksCountsAndKinds) {
    wx.wx.setVector("z", makeComplexVector({{1, 2}}));
    struct Case { const char* expression; const char* message; };
    const Case cases[] = {
        {"_TestAddPairs(1)", "Function '_TestAddPairs' takes 2 arguments, not 1"},
        {"_TestShapeEach(1, 2)", "Function '_TestShapeEach' takes 1 argument, not 2"},
        {"_TestFailLoudly(1, 2, 3)", "Function '_TestFailLoudly' takes 0 to 2 arguments, not 3"},
        {"_TestAddPairs(1, 'x')", "Argument 2 of function '_TestAddPairs' must be real, not a string"},
        {"_TestAddPairs(1, z)", "Argument 2 of function '_TestAddPairs' must be real, not complex"},
        {"_TestShapeEach('x')", "Argument 1 of function '_TestShapeEach' must be a number, not a string"},
        {"nosuch(1)", "Unknown function 'nosuch'"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(wx(c.expression), nullptr) << c.expression;
        EXPECT_EQ(wx.messages(), c.message) << c.expression;
    }
    // A number where text is wanted arrives as its text.
    VectorPtr text = wx("_TestString([2, 0.5])");
    ASSERT_NE(text, nullptr) << wx.messages();
    EXPECT_EQ(reals(text), (std::vector<double>{2, 1, 2}));
    // An empty vector is of whatever kind the position takes.
    VectorPtr empty = wx("_TestString([])");
    ASSERT_NE(empty, nullptr) << wx.messages();
    EXPECT_EQ(reals(empty), (std::vector<double>{0, 1, 0}));
}

TEST_F(Framework, HostLetsThroughKindsAFunctionDeclaresItReads) {
    VectorPtr r = wx("_TestShapeOrText(['a', 'b'])");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{2, 1, 2}));
}

TEST_F(Framework, EachDivisionIsOneCall) {
    // Flagged MULTI_EACH: one call per run, each seeing one run.
    VectorPtr r = wx("_TestShapeEach(runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{3, 1, 9, 2, 1, 9, 4, 1, 9}));
    EXPECT_EQ(r->numDivisions(), 3u);
    EXPECT_EQ(r->label(0), "R=1k");
    EXPECT_EQ(r->label(1), std::nullopt);
    EXPECT_EQ(r->label(2), "R=3k");
    // MULTI_ALL sees every division at once; MULTI_JOINED sees one long vector; no MultiDef array
    // sees the vector as the host holds it.
    EXPECT_EQ(reals(wx("_TestShapeAll(runs)")), (std::vector<double>{9, 3, 9}));
    EXPECT_EQ(reals(wx("_TestShapeJoined(runs)")), (std::vector<double>{9, 1, 9}));
    EXPECT_EQ(reals(wx("_TestShapeWhole(runs)")), (std::vector<double>{9, 3, 9}));
}

TEST_F(Framework, FlaggedArgumentsStepTogetherAndSingleDivisionsRepeat) {
    VectorPtr r = wx("_TestAddPairs(runs, runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{2, 4, 6, 20, 40, 200, 400, 600, 800}));
    EXPECT_EQ(xs(r), (std::vector<double>{0, 1, 2, 0, 1, 0, 1, 2, 3}));
    EXPECT_EQ(r->ref.phys, units::Time);
    EXPECT_EQ(r->phys, units::Voltage);
    // The reference of the joined result shares the argument's x-values.
    EXPECT_EQ(r->ref.realValues, wx.wx.findVector("runs")->ref.realValues);

    EXPECT_EQ(reals(wx("_TestAddPairs(runs, 1)")), (std::vector<double>{2, 3, 4, 11, 21, 101, 201, 301, 401}));

    auto two = std::make_shared<Vector>();
    two->real = {1, 2, 3, 4};
    two->setDivisionLengths({2, 2});
    wx.wx.setVector("two", two);
    EXPECT_EQ(wx("_TestAddPairs(runs, two)"), nullptr);
    EXPECT_EQ(wx.messages(), "The arguments of function '_TestAddPairs' have different numbers of divisions (3 and 2)");
}

TEST_F(Framework, UnflaggedArgumentIsPassedWholeToEveryCall) {
    // Argument 1 is not iterated: each call sees all nine values from the start.
    VectorPtr r = wx("_TestAddFixed(runs, runs)");
    ASSERT_NE(r, nullptr) << wx.messages();
    EXPECT_EQ(reals(r), (std::vector<double>{2, 4, 6, 11, 22, 101, 202, 303, 410}));
}

TEST_F(Framework, ResultsOfEveryAllocTypeAreAssembledByDivision) {
    VectorPtr one = wx("_TestFirstValue(runs)");
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(reals(one), (std::vector<double>{1, 10, 100}));
    EXPECT_EQ(one->numDivisions(), 3u);
    EXPECT_EQ(one->label(2), "R=3k");
    EXPECT_FALSE(one->ref.present());

    VectorPtr two = wx("_TestFirstTwo(runs)");
    ASSERT_NE(two, nullptr);
    EXPECT_EQ(reals(two), (std::vector<double>{1, 2, 10, 20, 100, 200}));
    EXPECT_EQ(two->divisionLength(1), 2u);
}

TEST_F(Framework, WholeArgumentResultKeepsTheDivisionsOfItsReference) {
    VectorPtr r = wx("_TestCopyWhole(runs)");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->numDivisions(), 3u);
    EXPECT_EQ(r->divisionLength(2), 4u);
    EXPECT_EQ(r->label(0), "R=1k");
    EXPECT_EQ(xs(r).size(), 9u);
    // Without x-values the divisions still pass on.
    auto bare = std::make_shared<Vector>(*threeRuns());
    bare->ref = Reference{};
    wx.wx.setVector("bare", bare);
    VectorPtr b = wx("_TestCopyWhole(bare)");
    EXPECT_EQ(b->numDivisions(), 3u);
    EXPECT_EQ(b->label(2), "R=3k");
    EXPECT_FALSE(b->ref.present());
}

TEST_F(Framework, FailuresAndWarnings) {
    long before = wx.sink.use_count();
    EXPECT_EQ(wx("_TestFailLoudly()"), nullptr);
    EXPECT_EQ(wx.messages(), "Argument out of range for function '_TestFailLoudly'");
    EXPECT_EQ(wx.sink.use_count(), before);  // the handler's reference was released

    EXPECT_EQ(wx("_TestFailQuietly()"), nullptr);
    EXPECT_EQ(wx.messages(), "Function '_TestFailQuietly' failed");

    // A message from a call that succeeds is reported and the value kept.
    VectorPtr r = wx("_TestWarn()");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(reals(r), std::vector<double>{7});
    EXPECT_EQ(wx.messages(), "x value out of range for function '_TestWarn'");
}

TEST(FuncResult, BuildsDivisionsAndSharesCopiedVectors) {
    FuncResult r;
    r.setType(VD_REAL, VD_NONE);
    r.allocate(2, RESULT_LIKE_ARGS, 5);
    r.data()[0] = 1;
    r.data()[1] = 2;
    r.setCurrentDivision(1);
    r.allocate(3, RESULT_LIKE_ARGS, 5);
    std::fill(r.data(), r.data() + 3, 9.0);
    EXPECT_EQ(r.data(0)[1], 2);
    VectorPtr v = r.release();
    EXPECT_EQ(reals(v), (std::vector<double>{1, 2, 9, 9, 9}));
    EXPECT_EQ(v->numDivisions(), 2u);

    VectorPtr original = makeRealVector({1, 2, 3});
    FuncResult copy;
    copy.copyVector(original);
    EXPECT_EQ(copy.release(), original);  // shared, not copied

    FuncResult changed;
    changed.copyVector(original);
    changed.setPhysType(units::Voltage, units::NoRef);  // a change makes it the result's own
    VectorPtr own = changed.release();
    EXPECT_NE(own, original);
    EXPECT_EQ(reals(own), reals(original));
    EXPECT_EQ(own->phys, units::Voltage);

    FuncResult withRef;
    withRef.copyVector(makeRealVector({5, 6}), makeRealVector({0.5, 1.5}, units::Time));
    VectorPtr curve = withRef.release();
    EXPECT_EQ(xs(curve), (std::vector<double>{0.5, 1.5}));
    EXPECT_EQ(curve->ref.phys, units::Time);
}

TEST(FuncArgs, ViewsOfDivisions) {
    VectorPtr runs = threeRuns();
    VectorPtr list[] = {runs};
    FuncArgs args(list);
    EXPECT_EQ(args.numYDivisions(0), 3);
    EXPECT_EQ(args.numXDivisions(0), 3);
    EXPECT_EQ(args.data(0, 2)[0], 100);
    EXPECT_EQ(args.refData(0, 1)[1], 1);
    EXPECT_EQ(args.divisionLength(0, 2), 4);
    EXPECT_EQ(args.data(0, 3), nullptr);
    EXPECT_EQ(args.complexData(0), nullptr);
    EXPECT_EQ(args.stringData(0), nullptr);
    DivisionLabelArray labels;
    args.getYDivisionLabelArray(0, labels);
    EXPECT_EQ(labels, (DivisionLabelArray{"R=1k", std::nullopt, "R=3k"}));

    args.setView(0, FuncArgs::division(runs, 1));
    EXPECT_EQ(args.length(0), 2);
    EXPECT_EQ(args.totalLength(0), 9);
    EXPECT_EQ(args.numYDivisions(0), 1);
    EXPECT_EQ(args.data(0)[0], 10);
    args.getYDivisionLabelArray(0, labels);
    EXPECT_EQ(labels, (DivisionLabelArray{std::nullopt}));

    VectorPtr strs[] = {makeStringVector({"a", std::nullopt})};
    FuncArgs s(strs);
    EXPECT_EQ(s.string(0, 0), "a");
    EXPECT_EQ(s.string(0, 1), "");  // a null element reads as ""
    EXPECT_FALSE(s.stringData(0)[1].has_value());
    EXPECT_EQ(s.string(0, 5), "");
    EXPECT_TRUE(std::isnan(s.scalar(0)));
    EXPECT_EQ(s.refType(0), VD_NONE);
    EXPECT_EQ(s.refPhysType(0), units::NoRef);
}

// The helpers every family reads its arguments with: presence, integers, needed x-values.
TEST(FuncArgs, OptionalArgumentsIntegersAndXValues) {
    VectorPtr list[] = {makeRealVector({2.9}), makeRealVector({}), makeRealVector({NAN}), threeRuns()};
    FuncArgs args(list);
    EXPECT_TRUE(args.has(3));
    EXPECT_FALSE(args.has(4));
    EXPECT_EQ(args.string(4), "");  // an absent argument reads as no text
    EXPECT_EQ(args.integer(0), 2);
    for (int i : {1, 2, 4}) EXPECT_EQ(args.integer(i), std::nullopt) << i;  // empty, NaN, absent

    CollectingMessageHandler sink;
    std::vector<double> scratch;
    const FuncInfo& info = *functionTable().find("Truncate");
    EXPECT_EQ(args.neededRefData(3, scratch, info, sink), args.refData(3));
    EXPECT_EQ(sink.messages().size(), 0u);
    EXPECT_EQ(args.neededRefData(0, scratch, info, sink), nullptr);
    EXPECT_EQ(sink.messages(), (std::vector<std::string>{"Argument 1 in function 'Truncate' has no reference (xvalues)"}));
}

// Late-bound entry points: slots of two registrations resolve together; unresolved ones throw.
int (*slotA)(int) = [](int) -> int { throw DynFuncException("dyn_TestEntry"); };
int (*slotB)(int) = [](int) -> int { throw DynFuncException("dyn_TestEntry"); };
const RegisterDynFuncCall registerA(&slotA, "dyn_TestEntry", false, true, __FILE__, __LINE__);
const RegisterDynFuncCall registerB(&slotB, "dyn_TestEntry", false, true, __FILE__, __LINE__);

int twice(int x) { return 2 * x; }

TEST(DynFunc, UnresolvedCallThrowsAndRepeatedRegistrationsResolveTogether) {
    try {
        slotA(1);
        FAIL() << "expected DynFuncException";
    } catch (const DynFuncException& e) {
        EXPECT_EQ(e.status(), 9);
        EXPECT_FALSE(e.flag());
        EXPECT_STREQ(e.what(), "*** FATAL ERROR *** Unresolved dynamic function 'dyn_TestEntry' called");
    }
    EXPECT_EQ(dyn_ProvideEntryPoint("dyn_TestEntry", &twice), 2);
    EXPECT_EQ(slotA(3), 6);
    EXPECT_EQ(slotB(4), 8);
    dyn_ProvideEntryPoint<int(int)>("dyn_TestEntry", nullptr);
    EXPECT_THROW(slotB(1), DynFuncException);

    auto names = registeredEntryPoints();
    for (const char* expected : {"dyn_GetDefaultMessageHandler", "dyn_GetScpInterface", "dyn_IdentifyBinary"})
        EXPECT_NE(std::find_if(names.begin(), names.end(), [&](const char* n) { return std::string_view(n) == expected; }),
                  names.end());
}

// The interpreter binds the entry points; they answer only while it evaluates (see
// tests/lang/interpreters_test.cpp).
TEST(DynFunc, InterpreterResolvesTheHostEntryPoints) {
    Session wx;
    EXPECT_STREQ(dyn_IdentifyBinary(), kVersionText);
    EXPECT_THROW(dyn_GetScpInterface(), DynFuncException);
    EXPECT_THROW(internal_error("Error found in module %s, line %d", "x.cpp", 12), DynFuncException);
}

TEST(Exceptions, StatusAndMessage) {
    MemoryException m("double");
    EXPECT_EQ(m.status(), 5);
    EXPECT_STREQ(m.what(), "*** Fatal error, out of memory ***\nDetected in YVector<double>::allocPrim");
    EXPECT_THROW(Array<double>(size_t{1} << 62), MemoryException);

    // Beyond the allocation limit a request fails at once, and the host reports it.
    size_t saved = allocationLimit();
    setAllocationLimit(1 << 20);
    EXPECT_THROW(Array<double>(1 << 18), MemoryException);
    Session wx;
    EXPECT_EQ(wx("unitvec(200000)"), nullptr);
    EXPECT_EQ(wx.messages(), "*** Fatal error, out of memory ***\nDetected in YVector<double>::allocPrim");
    setAllocationLimit(saved);
    EXPECT_EQ(wx("unitvec(200000)")->size(), 200000u);
}

TEST(Options, SettingParsesCheckedValues) {
    EXPECT_EQ(findOption("InterpPts")->file(), std::string("src/functions/options.cpp"));
    EXPECT_EQ(setOption("interppts", "2k"), "");
    EXPECT_EQ(sp_GetIntOption("InterpPts"), 2000);
    EXPECT_EQ(setOption("InterpPts", "many"), "option 'InterpPts' needs an integer, not 'many'");
    EXPECT_EQ(setOption("InterpPts", "1.5"), "option 'InterpPts' needs an integer, not '1.5'");
    EXPECT_EQ(sp_GetIntOption("InterpPts"), 2000);
    EXPECT_EQ(setOption("NoSuchOption", "1"), "unknown option 'NoSuchOption'");
    findOption("InterpPts")->reset();
    EXPECT_EQ(sp_GetIntOption("InterpPts"), 1024);
    EXPECT_EQ(sp_GetIntOption("NoSuchOption", -3), -3);

    MakeOption real(__FILE__, __LINE__, "TestReal", 0.25);
    EXPECT_EQ(sp_GetDoubleOption("testreal"), 0.25);
    EXPECT_EQ(setOption("TestReal", "1meg"), "");
    EXPECT_EQ(sp_GetDoubleOption("TestReal"), 1e6);
}

std::vector<std::string> eventLog;
void logPostCli(void*) { eventLog.push_back("PostCli"); }
void logExitCli(void*) { eventLog.push_back("ExitCli"); }
void logExit(void*) { eventLog.push_back("Exit"); }

TEST(Events, RaisedPerCommandLineAndOnLeaving) {
    AutoFunc post("PostCli", logPostCli, "logPostCli");
    AutoFunc exitCli("ExitCli", logExitCli, "logExitCli");
    AutoFunc exit("Exit", logExit, "logExit");
    eventLog.clear();
    {
        Session wx;
        wx.wx.runLine("x = 1; y = 2", nullptr);
        wx.wx.runLine("nosuch(", nullptr);  // a failed line ends too
        wx.wx.finish();
        wx.wx.finish();  // only once
    }
    EXPECT_EQ(eventLog, (std::vector<std::string>{"PostCli", "PostCli", "ExitCli", "Exit"}));
    EXPECT_EQ(eventCallbacks("postcli").size(), 1u + eventCallbacks("PostCli").size() - 1u);
}

}  // namespace
}  // namespace wavex
