"""Conan 2 recipe: conan create packaging/conan [-o geomath/*:files=True]"""

import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

ROOT = os.path.normpath(os.path.join(os.path.dirname(__file__), "..", ".."))


class GeomathConan(ConanFile):
    name = "geomath"
    license = "MIT"
    description = "Geodetic mathematics for surveying and mapping"
    topics = ("geodesy", "surveying", "map-projections", "datum")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False], "files": [True, False]}
    default_options = {"shared": True, "fPIC": True, "files": False}
    implements = ["auto_shared_fpic"]

    def set_version(self):
        lists = load(self, os.path.join(ROOT, "CMakeLists.txt"))
        self.version = re.search(r"project\(geomath VERSION ([0-9.]+)", lists).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "geomath/*", "files/*"):
            copy(self, pattern, ROOT, self.export_sources_folder)

    def requirements(self):
        if self.options.files:
            self.requires("fmt/[>=9]")
            self.requires("gdal/[>=3.5]")
            self.requires("nlohmann_json/[>=3.10]")
            self.requires("proj/[>=9]")
            self.requires("rapidjson/cci.20230929")
            self.requires("sqlite3/[>=3.40]")

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["GEOMATH_BUILD_FILES"] = bool(self.options.files)
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "geomath")
        library = self.cpp_info.components["geomath"]
        library.libs = ["geomath"]
        library.set_property("cmake_target_name", "geomath::geomath")
        if not self.options.shared:
            library.defines = ["GEOMATH_STATIC"]
        if self.settings.os in ("Linux", "FreeBSD"):
            library.system_libs = ["m"]
        if not self.options.files:
            return
        core = self.cpp_info.components["files_core"]
        core.libs = ["geomath_files_core"]
        core.includedirs = ["include/geomath-files"]
        core.requires = ["geomath", "fmt::fmt", "nlohmann_json::nlohmann_json", "rapidjson::rapidjson"]
        core.set_property("cmake_target_name", "geomath::files_core")
        files = self.cpp_info.components["files"]
        files.libs = ["geomath_files"]
        files.requires = ["files_core", "gdal::gdal", "proj::proj", "sqlite3::sqlite3"]
        files.set_property("cmake_target_name", "geomath::files")
