// The scripting language beside CPython, embedded: the same loops, each called once per iteration.
#include <Python.h>

#include <Carbon/OSA.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

namespace {

struct Pair {
    const char *script;  // on run
    const char *python;  // def run():
};

const Pair kLoop = {
    "on run\nset s to 0\nrepeat with i from 1 to 1000000\nset s to (s + i mod 7) mod 1000\nend "
    "repeat\nreturn s\nend run\n",
    "def run():\n    s = 0\n    for i in range(1, 1000001):\n        s = (s + i % 7) % 1000\n    return s\n"};

const Pair kWhile = {
    "on run\nset a to 27\nset n to 0\nrepeat while n < 300000\nif a mod 2 = 0 then\nset a to a div "
    "2\nelse\nset a to (a * 3 + 1) mod 100003\nend if\nset n to n + 1\nend repeat\nreturn a\nend run\n",
    "def run():\n    a = 27\n    n = 0\n    while n < 300000:\n        if a % 2 == 0:\n            a = a // "
    "2\n        else:\n            a = (a * 3 + 1) % 100003\n        n = n + 1\n    return a\n"};

const Pair kCalls = {"on fib(n)\nif n < 2 then return n\nreturn fib(n - 1) + fib(n - 2)\nend fib\non "
                     "run\nreturn fib(22)\nend run\n",
                     "def fib(n):\n    if n < 2:\n        return n\n    return fib(n - 1) + fib(n - 2)\ndef "
                     "run():\n    return fib(22)\n"};

const Pair kList = {
    "on run\nset l to {}\nrepeat with i from 1 to 100000\nset end of l to i\nend repeat\nset s to 0\nrepeat "
    "with i from 1 to 100000\nset s to (s + (item i of l)) mod 1000\nend repeat\nreturn s\nend run\n",
    "def run():\n    l = []\n    for i in range(1, 100001):\n        l.append(i)\n    s = 0\n    for i in "
    "range(0, 100000):\n        s = (s + l[i]) % 1000\n    return s\n"};

const Pair kJoin = {"on run\nset s to \"\"\nrepeat with i from 1 to 100000\nset s to s & \"line of "
                    "text\"\nend repeat\nreturn length of s\nend run\n",
                    "def run():\n    s = ''\n    for i in range(1, 100001):\n        s = s + 'line of "
                    "text'\n    return len(s)\n"};

const Pair kItems = {"on run\nset s to \"alpha,beta,gamma,delta\"\nrepeat 12 times\nset s to s & \",\" & "
                     "s\nend repeat\nset AppleScript's text item delimiters to \",\"\nset l to text items of "
                     "s\nset t to l as text\nreturn {count l, length of t}\nend run\n",
                     "def run():\n    s = 'alpha,beta,gamma,delta'\n    for i in range(12):\n        s = s + "
                     "',' + s\n    l = s.split(',')\n    t = ','.join(l)\n    return (len(l), len(t))\n"};

const Pair kCharacters = {
    "on run\nset s to \"the quick brown fox\"\nrepeat 10 times\nset s to s & s\nend repeat\nset n to "
    "0\nrepeat with i from 1 to length of s\nif character i of s = \"o\" then set n to n + 1\nend "
    "repeat\nreturn n\nend run\n",
    "def run():\n    s = 'the quick brown fox'\n    for i in range(10):\n        s = s + s\n    n = 0\n    "
    "for i in range(len(s)):\n        if s[i] == 'o':\n            n = n + 1\n    return n\n"};

void script(benchmark::State &state, const Pair &pair)
{
    ComponentInstance component = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    AEDesc source;
    AECreateDesc(typeUTF8Text, pair.script, Size(std::strlen(pair.script)), &source);
    OSAID compiled = kOSANullScript;
    if (OSACompile(component, &source, kOSAModeNull, &compiled) != noErr)
        state.SkipWithError("does not compile");
    AEDisposeDesc(&source);
    for (auto _ : state) {
        OSAID value = kOSANullScript;
        if (OSAExecute(component, compiled, kOSANullScript, kOSAModeNull, &value) != noErr)
            state.SkipWithError("failed");
        OSADispose(component, value);
    }
    CloseComponent(component);
}

void python(benchmark::State &state, const Pair &pair)
{
    if (!Py_IsInitialized())
        Py_InitializeEx(0);
    PyObject *names = PyDict_New();
    PyDict_SetItemString(names, "__builtins__", PyEval_GetBuiltins());
    Py_XDECREF(PyRun_String(pair.python, Py_file_input, names, names));
    PyObject *run = PyDict_GetItemString(names, "run");
    if (!run)
        state.SkipWithError("does not compile");
    for (auto _ : state) {
        PyObject *value = PyObject_CallNoArgs(run);
        if (!value)
            state.SkipWithError("failed");
        Py_XDECREF(value);
    }
    Py_DECREF(names);
}

#define SCRIPT_BENCHMARK(name, pair)                                                                         \
    [[maybe_unused]] const auto *name##Script =                                                              \
        benchmark::RegisterBenchmark("script/" #name ":tarvik", script, pair);                               \
    [[maybe_unused]] const auto *name##Python =                                                              \
        benchmark::RegisterBenchmark("script/" #name ":CPython", python, pair)

SCRIPT_BENCHMARK(counting, kLoop);
SCRIPT_BENCHMARK(branching, kWhile);
SCRIPT_BENCHMARK(calls, kCalls);
SCRIPT_BENCHMARK(list, kList);
SCRIPT_BENCHMARK(joining, kJoin);
SCRIPT_BENCHMARK(items, kItems);
SCRIPT_BENCHMARK(characters, kCharacters);

}  // namespace
