pluginManagement {
    repositories {
        google()
        mavenCentral()
        gradlePluginPortal()
    }
}

dependencyResolutionManagement {
    repositories {
        google()
        mavenCentral()
        maven { url = uri("../../build/maven") } // written by packaging/assemble_aar.py
    }
}

rootProject.name = "camera-example"
include(":app")
