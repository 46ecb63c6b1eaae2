#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Tests of the lint scripts: each is fed samples that it must refuse and samples that it must let pass."""

import contextlib
import io
import pathlib
import shutil
import struct
import subprocess
import tempfile
import unittest

import abi_probe
import check_abi
import check_debian
import check_format
import check_forwarding
import check_functions
import check_kept
import check_layers
import check_links
import check_spdx
import check_symbols
import check_tidy
import check_words
import lint_files
import release_lists
import tidy_batches


class Layers(unittest.TestCase):
    BELOW = {
        "qt2/CMakeLists.txt": "wmsg_public_headers(\n    qarray.h)\n",
        "qt2/qarray.h": "",
        "core/log.h": "",
        "core/CMakeLists.txt": "wmsg_public_headers(wmfm.h)\n",
        "core/wmfm.h": "",
        "mms/codec/wmmscontenttype.h": "",
        "mms/codec/wsp_stream.h": "",
        "mms/model/mail_file.h": "",
        "platform/applog/applog.h": "",
        "drm/wmmsdrmutil.h": "",
    }

    def problems(self, path, text):
        return check_layers.check({**self.BELOW, path: text})

    def refuses(self, path, text, words):
        problems = self.problems(path, text)
        self.assertEqual(len(problems), 1, problems)
        self.assertIn(words, problems[0])

    def passes(self, path, text):
        self.assertEqual(self.problems(path, text), [])

    def test_an_include_downwards_passes(self):
        self.passes("mms/codec/a.cpp", '#include "core/log.h"\n#include <QtCore/QString>\n#include "wmsg_export.h"\n')

    def test_an_include_upwards_is_refused(self):
        self.refuses("mms/codec/a.cpp", '\n#include "mms/model/mail_file.h"\n', "a.cpp:2: mms/model/mail_file.h is not")
        self.refuses("qt2/a.cpp", '#  include "core/wmfm.h"\n', "is not below qt2")
        self.refuses("platform/applog/a.cpp", '#include "core/wmfm.h"\n', "is not below platform")

    def test_a_single_header_is_open_where_its_room_is_not(self):
        self.passes("util/a.cpp", '#include "mms/codec/wmmscontenttype.h"\n')
        self.refuses("util/a.cpp", '#include "mms/codec/wsp_stream.h"\n', "is not below util")

    def test_only_doors_look_up(self):
        self.passes("core/factories.cpp", '#include "mms/model/mail_file.h"\n')
        self.refuses("core/other.cpp", '#include "mms/model/mail_file.h"\n', "is not below core")
        self.passes("mms/model/wmmsmsg_drm.cpp", '#include "drm/wmmsdrmutil.h"\n')
        self.refuses("mms/model/wmmsmsg.cpp", '#include "drm/wmmsdrmutil.h"\n', "is not below mms/model")

    def test_unknown_folders_are_refused(self):
        self.refuses("helpers/a.cpp", "", "lies in no known room")
        self.refuses("a.cpp", "", "lies in no known room")

    def test_includes_are_written_from_the_root(self):
        self.refuses("core/a.cpp", '#include "wmfm.h"\n', "is no file of ours, seen from the root")
        self.refuses("core/a.cpp", '#include "core/gone.h"\n', "does not exist")
        self.refuses("core/a.cpp", "#include <core/wmfm.h>\n", "with quotes")

    def test_public_headers_are_there_and_include_public_ones(self):
        self.refuses("core/wmfm.h", '#include "core/log.h"\n', "is not installed, and this header is")
        self.passes("core/wmfm.h", '#include "qt2/qarray.h"\n#include "platform/applog/applog.h"\n')
        self.refuses("sms/CMakeLists.txt", "wmsg_public_headers(gone.h)\n", "sms/gone.h: declared as public")

    def test_tools_see_what_is_installed(self):
        self.passes("tools/wmsg/a.cpp", "#include <core/wmfm.h>\n#include <WMFMMsg>\n")
        self.refuses("tools/wmsg/a.cpp", '#include "core/wmfm.h"\n', "include installed headers with <>")
        self.refuses("tools/wmsg/a.cpp", "#include <core/log.h>\n", "is not installed")

    def test_programs_share_the_pieces_of_the_services_and_no_more(self):
        shared = {"services/common/push_client.h": "", "services/mmsproxyd/spool.h": ""}
        for path in ("tools/wmsg/push.cpp", "sim/mmsc/a.cpp"):
            tree = {**self.BELOW, **shared, path: '#include "services/common/push_client.h"\n'}
            self.assertEqual(check_layers.check(tree), [])
            tree[path] = '#include "services/mmsproxyd/spool.h"\n'
            self.assertEqual(len(check_layers.check(tree)), 1)

    def test_each_program_shares_what_it_needs(self):
        shared = {"services/intake/intake.h": "", "services/sms_pdu/tpdu.h": ""}
        both = "".join(f'#include "{name}"\n' for name in shared)
        self.assertEqual(check_layers.check({**self.BELOW, **shared, "tools/wmsg/a.cpp": both}), [])
        problems = check_layers.check({**self.BELOW, **shared, "sim/modem/a.cpp": both})
        self.assertEqual(len(problems), 1, problems)
        self.assertIn("services/intake/intake.h is the library's", problems[0])

    def test_services_use_the_records_of_their_clients_and_no_more(self):
        private = {"mms/session/mms_ua_cmd_p.h": "", "platform/telephony/telephony_records_p.h": "",
                   "platform/telephony/telephony_client_p.h": ""}
        for name in list(private)[:2]:
            tree = {**self.BELOW, **private, "services/telephonyd/a.cpp": f'#include "{name}"\n'}
            self.assertEqual(check_layers.check(tree), [])
            del tree["services/telephonyd/a.cpp"]
            tree["tools/wmsg/a.cpp"] = f"#include <{name}>\n"
            self.assertEqual(len(check_layers.check(tree)), 1)
        tree = {**self.BELOW, **private, "services/telephonyd/a.cpp": '#include "platform/telephony/telephony_client_p.h"\n'}
        self.assertEqual(len(check_layers.check(tree)), 1)

    def test_tests_see_everything(self):
        self.passes("tests/core/tst_a.cpp", '#include "core/log.h"\n#include "tst_a.moc"\n')


class Spdx(unittest.TestCase):
    LINES = "SPDX-FileCopyrightText: 2026 The wmsg authors", "SPDX-License-Identifier: Apache-2.0"

    def test_both_lines_come_first(self):
        slashes, hashes = ("".join(f"{mark} {line}\n" for line in self.LINES) for mark in ("//", "#"))
        for path, text in {"a.h": slashes, "CMakeLists.txt": hashes, "run": "#!/bin/sh\n" + hashes,
                           "tests/data/a.h": "", "README.md": ""}.items():
            self.assertEqual(check_spdx.check({path: text}), [], path)
        for path, text in {"a.h": "#pragma once\n" + slashes, "a.cpp": slashes.partition("\n")[0],
                           "CMakeLists.txt": "", "run": "#!/bin/sh\n", "b.py": "import re\n" + hashes}.items():
            self.assertEqual(len(check_spdx.check({path: text})), 1, path)


class Words(unittest.TestCase):
    def test_what_a_reader_cannot_follow_is_refused(self):
        for line in ["as the spec" + "ification says", "see sp" + "ec.md", "as Pa" + "rt 4.2 says", "see section 7.1",
                     "after RFC 2045", "in /home/ann/mail", "in /work/project", "# TO" + "DO later", "# FIX" + "ME", "// HA" + "CK", "// X" + "XX: odd", "not yet implemented",
                     "// copy(data, size);", "//   return 0;", "// m_size = 4;", "//}"]:
            self.assertEqual(len(check_words.check({"core/a.cpp": f"first\n{line}\n"})), 1, line)

    def test_plain_words_pass(self):
        for line in ["TO" + "DO(#12): more", 'name = "X' + 'XX"', "a special part", "two parts", "pa" + "rt 2.1 of the tree", "/usr/share/mime", "/home/x/a", "${root}/work/x",
                     "// The length is read and not used; the rest follows.", "// see writeByte();",
                     "/// Part of the message;", "specific", "version 4.2"]:
            self.assertEqual(check_words.check({"core/a.cpp": line}), [], line)

    def test_a_problem_names_its_line(self):
        problem, = check_words.check({"a.md": "one\ntwo FIX" + "ME\n"})
        self.assertTrue(problem.startswith("a.md:2: "), problem)


class Kept(unittest.TestCase):
    def problems(self, comment, test):
        return check_kept.check({"core/a.cpp": comment, "tests/core/tst_a.cpp": test})

    def test_the_words_stand_in_a_test(self):
        comment = "    // Kept: the Length is\n    //   read, not used. Always.\n    f();\n"
        self.assertEqual(self.problems(comment, '{"the length  is read", 1}'), [])
        self.assertEqual(self.problems(comment, "// The length\n// is read."), [])
        self.assertEqual(self.problems("/// Kept: version 1.0 stays. Yes.", '"version 1.0 stays"'), [])

    def test_missing_words_are_refused(self):
        problem, = self.problems("x\n// Kept: 32 and more is a length, not an error.\n", '"32 and less"')
        self.assertEqual(problem, 'core/a.cpp:2: no test under tests/ has the words "32 and more is a length"')

    def test_words_elsewhere_do_not_count(self):
        tree = {"core/a.cpp": "// Kept: it is so.\n", "core/b.cpp": "// it is so\n", "tests/a.cpp": "// it was so\n"}
        self.assertEqual(len(check_kept.check(tree)), 1)

    def test_saying_nothing_is_refused(self):
        self.assertEqual(len(self.problems("// Kept:\nint a;\n", "")), 1)


class Links(unittest.TestCase):
    TREE = {
        "README.md": "# Top\n",
        "core/a.h": "",
        "docs/page.md": "# A page\n\n## What `it` does, and why\n\n```sh\n# no heading [no](link)\n```\n",
    }

    def problems(self, path, text):
        return check_links.check({**self.TREE, path: text})

    def refuses(self, path, text, problem):
        self.assertEqual(self.problems(path, text), [problem])

    def test_what_is_there_can_be_linked_to(self):
        for link in ["page.md", "../core/a.h", "../core", "../README.md#top", "page.md#what-it-does-and-why",
                     "https://example.org/gone.md", "#here"]:
            self.assertEqual(self.problems("docs/b.md", f"# Here\n\nSee [it]({link})."), [], link)

    def test_links_into_the_blue_are_refused(self):
        self.refuses("docs/b.md", "\nSee [it](gone.md).", "docs/b.md:2: gone.md leads nowhere")
        self.refuses("docs/b.md", "[a](page.md#gone)", "docs/b.md:1: page.md#gone leads to no heading of that page")
        self.refuses("b.md", "```sh\n#\n```\n[a](docs/page.md#no-heading-nolink)",
                     "b.md:4: docs/page.md#no-heading-nolink leads to no heading of that page")

    def test_pages_that_code_names_are_there(self):
        self.assertEqual(self.problems("core/a.cpp", "// docs/page.md tells it; see also /docs/gone.md"), [])
        self.refuses("core/a.cpp", "\n// docs/decisions/gone.md tells it", "core/a.cpp:2: there is no docs/decisions/gone.md")


class Functions(unittest.TestCase):
    def function(self, lines, head="int f()"):
        return f"int before;\n\n{head}\n{{\n" + "    g();\n" * (lines - 2) + "}\n\nint after()\n{\n}\n"

    def test_sixty_lines_pass(self):
        self.assertEqual(check_functions.check({"a.cpp": self.function(60)}), [])

    def test_sixty_one_lines_are_refused(self):
        for head in ["int f()", "A::A()\n    : m_a(1)", "int A::f() const"]:
            problem, = check_functions.check({"a.cpp": self.function(61, head)})
            self.assertIn("a function of 61 lines", problem)

    def test_a_long_table_is_no_function(self):
        table = "static const Row kRows[] = {\n" + "    {1, 2},\n" * 200 + "};\n"
        self.assertEqual(check_functions.check({"a.cpp": table}), [])


class Symbols(unittest.TestCase):
    LISTING = ("0000000000001000 T WMMSMsg::setSubject(QString const&)\n"
               "0000000000001040 T WMMSMsg::WMMSMsg()\n"
               "0000000000001040 T WMMSMsg::WMMSMsg()\n"
               "0000000000001080 W void std::sort<int*>(int*, int*)\n"
               "0000000000001090 W QList<int>::~QList()\n"
               "0000000000004000 V vtable for WMMSMsg\n"
               "0000000000004010 V typeinfo for std::exception\n"
               "0000000000004020 V typeinfo for QEvent\n"
               "0000000000005000 B __odr_asan.something\n"
               "0000000000005010 T _init\n")

    def test_only_our_names_are_seen(self):
        self.assertEqual(check_symbols.owned(self.LISTING),
                         ["WMMSMsg::WMMSMsg()", "WMMSMsg::setSubject(QString const&)", "vtable for WMMSMsg"])

    def test_more_and_fewer_names_are_refused(self):
        self.assertEqual(check_symbols.compare(["a()"], ["a()"]), [])
        self.assertEqual(len(check_symbols.compare(["a()", "b()"], ["a()"])), 1)
        self.assertEqual(len(check_symbols.compare(["a()"], ["a()", "b()"])), 1)


class Debian(unittest.TestCase):
    TREE = {
        "CMakeLists.txt": 'cmake_minimum_required(VERSION 3.25)\nproject(wmsg VERSION 1.1.0 LANGUAGES CXX)\n',
        "debian/changelog": "wmsg (1.1.0-1) unstable; urgency=medium\n",
        "debian/control": ("Build-Depends:\n cmake (>= 3.25),\n debhelper-compat (= 13),\nBuild-Depends-Indep:\n doxygen <!nodoc>,\n"
                           "\nPackage: libwmsg1\nDepends: gone\n"),
        "scripts/install-deps": 'build="cmake doxygen debhelper"\n',
        "abi/1.0/libwmsg.symbols": "A::a(int)\nvtable for A\n",
        "abi/1.1/libwmsg.symbols": "A::b(int)\n",
        "abi/1.0/libwmsg-engine.symbols": "A::a(int)\nengine\n",
        "debian/libwmsg1.symbols": ('libwmsg.so.1 libwmsg1 #MINVER#\n (optional|regex)"^_ZSt.*@Base$" 1.0.0\n'
                                    ' (c++)"A::a(int)@Base" 1.0.0\n (c++)"A::b(int)@Base" 1.1.0\n (c++)"vtable for A@Base" 1.0.0\n'),
        "debian/libwmsg-platform1.symbols": ('libwmsg-engine.so.1 libwmsg-platform1 #MINVER#\n (c++)"A::a(int)@Base" 1.0.0\n'
                                             ' engine@Base 1.0.0\n'),
    }

    def test_what_agrees_passes(self):
        self.assertEqual(check_debian.check(self.TREE), [])

    def refuses(self, path, text, words):
        problem, = check_debian.check({**self.TREE, path: text})
        self.assertIn(words, problem)

    def test_another_version_is_refused(self):
        self.refuses("debian/changelog", "wmsg (1.0.0-2) unstable; urgency=medium\n", "is about 1.0.0, and CMakeLists.txt about 1.1.0")

    def test_names_that_differ_are_refused(self):
        self.refuses("abi/1.0/libwmsg.symbols", "A::a(int)\nA::c()\nvtable for A\n", "lacks A::c() of libwmsg")
        self.refuses("abi/1.0/libwmsg.symbols", "A::a(int)\n", "has vtable for A, which libwmsg does not promise")
        self.refuses("abi/1.0/libwmsg-engine.symbols", "engine\n", "has A::a(int), which libwmsg-engine does not promise")

    def test_names_of_another_version_are_refused(self):
        old = self.TREE["debian/libwmsg1.symbols"]
        self.refuses("debian/libwmsg1.symbols", old.replace("1.1.0", "1.0.0"), "has A::b(int) since 1.0.0, not 1.1.0")

    def test_libraries_that_are_not_listed_are_refused(self):
        self.refuses("abi/1.1/libwmsg-mimetype.symbols", "A::a(int)\n", "lacks libwmsg-mimetype")

    def test_packages_that_are_not_installed_are_refused(self):
        self.refuses("scripts/install-deps", 'build="cmake debhelper"\n', "lacks doxygen")

    def test_new_names_come_with_their_version(self):
        changed = {**self.TREE, "abi/1.1/libwmsg.symbols": "b\n"}
        self.assertEqual(check_debian.updated(changed, "debian/libwmsg1.symbols"),
                         'libwmsg.so.1 libwmsg1 #MINVER#\n (optional|regex)"^_ZSt.*@Base$" 1.0.0\n'
                         ' (c++)"A::a(int)@Base" 1.0.0\n b@Base 1.1.0\n (c++)"vtable for A@Base" 1.0.0\n')
        for path in check_debian.LISTS:
            self.assertEqual(check_debian.updated(self.TREE, path), self.TREE[path])


class Abi(unittest.TestCase):
    """A header of which each promise is broken in turn, and is built as the public headers are."""

    HEADER = ("class WMSG_EXPORT Shape {\npublic:\n    enum Kind { Round = 1 };\n    static constexpr int kMost = 4;\n"
              "    virtual ~Shape();\n    virtual int area() const;\n    virtual int edge() const;\n    bool isRound() const;\n"
              "    static int count();\nprotected:\n    int width;\nprivate:\n    short m_height;\n};\n"
              "namespace units {\nenum class Unit : int { Inch };\n}\n"
              "constexpr int kShapes = 3;\nWMSG_EXPORT int draw(const Shape &shape);\n")

    @classmethod
    def setUpClass(cls):
        if not shutil.which("g++") or struct.calcsize("P") != 8:
            raise unittest.SkipTest("the lists of layouts are those of g++ on 64 bits")
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.lines = cls.layouts(cls.HEADER)
        cls.promised = dict.fromkeys(cls.lines, "1.0")
        if shutil.which("abidw"):
            cls.deep = check_abi.deep_list(cls.folder / "probe.so", {"shape.h": cls.HEADER})

    @classmethod
    def layouts(cls, text):
        (cls.folder / "shape.h").write_text(text, encoding="utf-8")
        (cls.folder / "probe.cpp").write_text(abi_probe.source({"shape.h": text}), encoding="utf-8")
        subprocess.run(["g++", "-std=c++17", "-fPIC", "-shared", "-g", "-gdwarf-5", "-femit-class-debug-always",
                        "-fno-eliminate-unused-debug-types", "-Wno-deprecated-declarations", "-DWMSG_EXPORT=", cls.folder / "probe.cpp", "-o", cls.folder / "probe.so"], check=True)
        return check_abi.layouts(cls.folder / "probe.so", abi_probe.declarations({"shape.h": text}))

    def changed(self, old, new):
        """The problems and the news of the header with one change."""
        self.assertIn(old, self.HEADER)
        return check_abi.compare(self.promised, self.layouts(self.HEADER.replace(old, new)))

    def changed_deeply(self, old, new):
        """What abidiff says to it; nothing where it is not installed."""
        self.assertIn(old, self.HEADER)
        if not shutil.which("abidiff"):
            return None
        text = self.HEADER.replace(old, new)
        self.layouts(text)
        return check_abi.deep_problems(self.deep, self.folder / "probe.so", {"shape.h": text})

    def refuses(self, old, new, words, is_seen_deeply=True):
        problems, _ = self.changed(old, new)
        self.assertIn(words, "\n".join(problems))
        if is_seen_deeply:
            self.assertNotEqual(self.changed_deeply(old, new), [])

    def passes(self, old, new, *news):
        self.assertEqual(self.changed(old, new), ([], [f"new: {line}" for line in news]))
        self.assertIn(self.changed_deeply(old, new), ([], None))

    def test_the_layout_is_told(self):
        for line in ["class Shape: 16 bytes, aligned to 8, 3 virtual functions", "class Shape: at 8: int width",
                     "class Shape: at 12: short int (private)", "class Shape: virtual 2 int area() const",
                     "class Shape: bool isRound() const", "class Shape: static int count()",
                     "class Shape: static const int kMost = 4", "enum Shape::Kind: Round = 1",
                     "enum units::Unit: 4 bytes, int", "constant kShapes = 3", "function draw: int draw(const Shape &)"]:
            self.assertIn(line, self.lines)

    def test_members_that_come_or_move_are_refused(self):
        self.refuses("    int width;", "    int width, depth;", "class Shape: 16 bytes")
        self.refuses("    short m_height;", "    int m_height;", "at 12: short int (private)")

    def test_virtual_functions_that_come_or_move_are_refused(self):
        edge = "    virtual int edge() const;\n"
        self.refuses(edge, edge + "    virtual void turn();\n", "3 virtual functions")
        self.refuses("    virtual int area() const;\n" + edge, edge + "    virtual int area() const;\n", "virtual 2 int area() const")
        self.refuses("    virtual int area", "    int area", "virtual 2 int area() const")

    def test_functions_that_go_or_change_are_refused(self):
        self.refuses("    bool isRound() const;\n", "", "bool isRound() const", is_seen_deeply=False)
        self.refuses("bool isRound", "int isRound", "there is now: class Shape: int isRound() const", is_seen_deeply=False)
        self.refuses("static int count", "int count", "static int count()", is_seen_deeply=False)
        self.refuses("draw(const Shape &shape)", "draw(Shape *shape)", "draw(const Shape &)")

    def test_numbers_that_change_are_refused(self):
        self.refuses("Round = 1", "Round = 2", "there is now: enum Shape::Kind: Round = 2", is_seen_deeply=False)
        self.refuses("kMost = 4", "kMost = 5", "kMost = 4", is_seen_deeply=False)
        self.refuses("kShapes = 3", "kShapes = 2", "constant kShapes = 3")
        self.refuses("Unit : int", "Unit : short", "enum units::Unit: 4 bytes")

    def test_what_is_new_passes_and_is_told(self):
        self.passes("Round = 1", "Round = 1, Square", "enum Shape::Kind: Square = 2")
        self.passes("    static int count", "    void turn();\n    static int count", "class Shape: void turn()")
        self.passes("namespace", "struct Line {\n    int to;\n};\nnamespace",
                    "class Line: 4 bytes, aligned to 4, 0 virtual functions", "class Line: at 0: int to")

    def test_what_is_deprecated_is_still_there(self):
        self.passes("WMSG_EXPORT int draw", '[[deprecated("paint")]] WMSG_EXPORT int draw')
        self.passes("class WMSG_EXPORT Shape", 'class [[deprecated("Form")]] WMSG_EXPORT Shape')

    def test_private_names_do_not_matter(self):
        self.passes("m_height", "m_h")

    def test_names_that_go_are_refused(self):
        self.assertEqual(check_abi.compare({"A::a()": "1.0", "A::b()": "1.1"}, ["A::a()", "A::c()"]),
                         (["promised by 1.1: A::b()"], ["new: A::c()"]))

    def test_no_more_may_be_asked_of_platform_libraries(self):
        listed = {"libwmsg-engine: a()": "1.0"}
        self.assertEqual(check_abi.compare_demands(listed, []), [])
        self.assertEqual(len(check_abi.compare_demands(listed, ["libwmsg-engine: b()"])), 1)


class ReleaseLists(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def lists(self, version):
        return release_lists.Lists(self.folder, version)

    def test_a_version_lists_what_it_brings(self):
        self.lists("1.0.0").write("names", ["b", "c"])
        self.lists("1.1.0").write("names", ["a", "b", "c"])
        self.assertEqual((self.folder / "1.1" / "names").read_text(encoding="utf-8"), "a\n")
        self.assertEqual(self.lists("1.1.3").read("names"), {"b": "1.0", "c": "1.0", "a": "1.1"})
        self.assertEqual(self.lists("1.0.7").read("names"), {"b": "1.0", "c": "1.0"})
        self.assertEqual(self.lists("2.0.0").read("names"), {})

    def test_what_a_version_in_the_making_lists_may_change(self):
        for lines in (["a", "b"], ["b"]):
            self.lists("1.0.0").write("names", lines)
            self.assertEqual(list(self.lists("1.0.0").read("names")), lines)

    def test_former_versions_and_patches_are_left_alone(self):
        self.lists("1.0.0").write("names", ["a"])
        with self.assertRaisesRegex(SystemExit, "is gone:\na"):
            self.lists("1.1.0").write("names", ["b"])
        with self.assertRaisesRegex(SystemExit, "1.0.1 is a patch"):
            self.lists("1.0.1").write("names", ["a", "b"])


class Forwarding(unittest.TestCase):
    def tree(self, table):
        return {"cmake/WmsgForwarding.cmake": f"set(WMSG_FORWARDING\n{table})\n",
                "core/CMakeLists.txt": "wmsg_public_headers(wmfm.h)\n",
                "core/wmfm.h": "class WMSG_EXPORT WMFM {\n};\nclass WMFMOther;\n",
                "core/log.h": "class Private {\n};\n"}

    def test_each_public_class_has_its_header(self):
        self.assertEqual(check_forwarding.check(self.tree("    core/wmfm.h WMFM\n")), [])

    def test_missing_wrong_and_left_over_rows_are_refused(self):
        self.assertEqual(len(check_forwarding.check(self.tree(""))), 1)
        self.assertEqual(len(check_forwarding.check(self.tree("    core/wmfm.h WMFM\n    core/wmfm.h Gone\n"))), 1)
        self.assertEqual(len(check_forwarding.check(self.tree("    core/wmfm.h WMFM\n    core/log.h Private\n"))), 1)


class Tools(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.root = pathlib.Path(holder.name)
        for name in (".clang-format", ".clang-tidy"):
            (self.root / name).write_text((lint_files.ROOT / name).read_text())

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def test_the_formatter_refuses_another_look(self):
        self.write("good.cpp", "int f(char *text)\n{\n    return text[0];\n}\n")
        self.write("bad.cpp", "int f(char* text) {\n  return text[0];\n}\n")
        self.assertEqual(check_format.check(["good.cpp"], self.root), [])
        self.assertEqual(len(check_format.check(["good.cpp", "bad.cpp"], self.root)), 1)

    def test_the_analyser_refuses_a_missing_brace(self):
        self.write("good.cpp", "int f(int a)\n{\n    return a;\n}\n")
        self.write("bad.cpp", "int f(int a)\n{\n    if (a)\n        return 1;\n    return 2;\n}\n")
        self.write("compile_commands.json", "[%s]" % ",".join(
            '{"directory": "%s", "file": "%s.cpp", "command": "g++ -std=c++17 -c %s.cpp"}' % (self.root, name, name)
            for name in ("good", "bad")))
        program = check_tidy.analyser()
        self.assertEqual(check_tidy.analyse(program, self.root / "good.cpp", self.root), "")
        self.assertIn("readability-braces-around-statements",
                      check_tidy.analyse(program, self.root / "bad.cpp", self.root))

    def test_a_changed_header_is_a_new_fingerprint(self):
        self.write("core/a.cpp", '#include "core/a.h"\n')
        self.write("core/a.h", "#include <core/b.h>\n")
        self.write("core/b.h", "int one;\n")
        first = check_tidy.fingerprint("core/a.cpp", "g++", "14", self.root)
        self.assertEqual(first, check_tidy.fingerprint("core/a.cpp", "g++", "14", self.root))
        self.write("core/b.h", "int two;\n")
        self.assertNotEqual(first, check_tidy.fingerprint("core/a.cpp", "g++", "14", self.root))
        self.assertNotEqual(first, check_tidy.fingerprint("core/a.cpp", "g++", "15", self.root))


    # What the analyser must say -> a source that makes it say so.
    DEFECTS = {
        "clang-analyzer-core.NullDereference": "int f(int *a)\n{\n    if (a) {\n        return 1;\n    }\n    return *a;\n}\n",
        "clang-analyzer-cplusplus.NewDeleteLeaks": "int f()\n{\n    int *a = new int(1);\n    return *a;\n}\n",
        "clang-analyzer-deadcode.DeadStores": "int g();\nvoid f()\n{\n    int a = 0;\n    a = g();\n}\n",
        "readability-braces-around-statements": "int f(int a)\n{\n    if (a)\n        return 1;\n    return 2;\n}\n",
        "readability-function-size": "int f(int a)\n{\n" + "    ++a;\n" * 61 + "    return a;\n}\n",
        "bugprone-narrowing-conversions": "int f(double a)\n{\n    int b = 0;\n    b += a;\n    return b;\n}\n",
        "bugprone-branch-clone": "int f(int a)\n{\n    if (a) {\n        return 1;\n    } else {\n        return 1;\n    }\n}\n",
        "bugprone-integer-division": "double f(int a)\n{\n    return a / 2;\n}\n",
        "bugprone-suspicious-semicolon": "void g();\nvoid f(int a)\n{\n    if (a);\n    g();\n}\n",
        "bugprone-infinite-loop": "void f(int a)\n{\n    int i = 0;\n    while (i < a) {\n    }\n}\n",
        "bugprone-reserved-identifier": "int _F();\n",
        "bugprone-exception-escape": "void f() noexcept\n{\n    throw 1;\n}\n",
        "bugprone-forward-declaration-namespace": "namespace a {\nclass C;\n}\nnamespace b {\nclass C {};\n}\n",
        "google-explicit-constructor": "struct S {\n    S(int a);\n};\n",
        "modernize-use-override":
            "struct B {\n    virtual void f();\n};\nstruct D : B {\n    virtual void f();\n};\n",
        "performance-unnecessary-value-param":
            "struct S {\n    S(const S &);\n    int a;\n};\nint f(S s)\n{\n    return s.a;\n}\n",
    }

    def read_as_one(self, *paths):
        """The analyser's words on each of the sources, which make up one batch."""
        rows = {path: {"directory": str(self.root), "file": str(self.root / path),
                       "command": f"g++ -std=c++17 -o x.o -c {self.root / path}"} for path in paths}
        self.assertEqual(len(check_tidy.write_batches(rows, self.root, self.root)), 1)
        with contextlib.redirect_stdout(io.StringIO()):
            return list(check_tidy.analyse_all(check_tidy.analyser(), rows, self.root, self.root))

    def test_sources_read_as_one_hide_no_defect(self):
        self.write("core/good.cpp", "int good(int a)\n{\n    return a;\n}\n")
        for number, (name, text) in enumerate(self.DEFECTS.items()):
            self.write(f"core/bad_{number}.cpp", text)
            fine, said = self.read_as_one("core/good.cpp", f"core/bad_{number}.cpp")
            self.assertEqual(fine, "", name)
            self.assertIn(f"bad_{number}.cpp:", said)
            self.assertIn(name, said)

    def test_what_a_source_checks_of_its_argument_is_seen_beside_its_callers(self):
        self.write("core/a.cpp", "int f(int *a)\n{\n    if (a) {\n        return 1;\n    }\n    return *a;\n}\n")
        self.write("core/b.cpp", "int f(int *a);\nint g()\n{\n    int a = 1;\n    return f(&a);\n}\n")
        said, fine = self.read_as_one("core/a.cpp", "core/b.cpp")
        self.assertIn("core.NullDereference", said)
        self.assertEqual(fine, "")

    def test_every_check_is_asked_once(self):
        together, alone = (set(option.partition("=")[2].split(",")[1:])
                           for option in check_tidy.split_checks(check_tidy.analyser()))
        self.assertFalse(together & alone)
        self.assertIn("bugprone-narrowing-conversions", together)
        self.assertIn("bugprone-exception-escape", alone)
        self.assertIn("clang-analyzer-core.NullDereference", alone)


class Batches(unittest.TestCase):
    def are_together(self, one, other):
        return tidy_batches.batches({"a.cpp": one, "b.cpp": other}) == [["a.cpp", "b.cpp"]]

    def test_sources_without_common_words_are_read_as_one(self):
        self.assertTrue(self.are_together("int A::f()\n{\n    return 1;\n}\n", "int B::f()\n{\n    return 1;\n}\n"))
        self.assertTrue(self.are_together("namespace {\nint own(int x)\n{\n}\n} // namespace\n", "// own\nint other = at.own;\n"))

    def test_a_name_of_its_own_keeps_a_source_from_those_that_say_it(self):
        for declaration in ["int own(int x)", "struct own {", "enum class own { A };", "using own = int;",
                            "constexpr std::array<int, 2> own = {1, 2};", "Type own[] = {", "const char *own =",
                            'Q_LOGGING_CATEGORY(own, "a", QtInfoMsg)', "template <typename T> T own(T x)"]:
            text = f"namespace {{\n{declaration}\n}} // namespace\n"
            self.assertFalse(self.are_together(text, "int other = own;\n"), declaration)
            self.assertFalse(self.are_together("int other = own;\n", text), declaration)
        self.assertFalse(self.are_together("static int own(int x)\n{\n}\n", "int other = own(1);\n"))

    def test_macros_and_other_namespaces_keep_a_source_alone(self):
        self.assertFalse(self.are_together("#define A 1\n", "int b;\n"))
        self.assertFalse(self.are_together("using namespace wmsg::a;\n", "int b;\n"))
        self.assertTrue(self.are_together("using namespace Qt::StringLiterals;\n", "int b;\n"))

    def test_a_batch_has_an_end(self):
        sources = {f"{number}.cpp": "" for number in range(tidy_batches.LARGEST + 2)}
        self.assertEqual([len(batch) for batch in tidy_batches.batches(sources)], [tidy_batches.LARGEST, 2])

    def test_headers_come_before_every_name(self):
        sources = {"a.cpp": '#include "a.h"\n#include <b>\nint a;\n', "b.cpp": "#include <b>\n#include <c>\n"}
        text = tidy_batches.joined(list(sources), sources, pathlib.Path("/r"))
        self.assertEqual([line.split()[1] for line in text.splitlines()],
                         ['"a.h"', "<b>", "<c>", '"/r/a.cpp"', '"/r/b.cpp"'])


class Files(unittest.TestCase):
    def test_the_project_is_seen_and_build_folders_are_not(self):
        names = lint_files.paths()
        self.assertIn("CMakeLists.txt", names)
        self.assertFalse([name for name in names if name.startswith("build/")])

    def test_an_unpacked_archive_is_seen_too(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name in ("core/a.cpp", "build/core/b.cpp", "cmake/__pycache__/c.py"):
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).touch()
            self.assertEqual(lint_files.paths(root), ["core/a.cpp"])


if __name__ == "__main__":
    unittest.main()
