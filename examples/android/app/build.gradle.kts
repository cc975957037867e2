plugins {
    id("com.android.application")
}

android {
    namespace = "com.orvik.camera.example"
    compileSdk = 35

    defaultConfig {
        applicationId = "com.orvik.camera.example"
        minSdk = 29 // the library takes 26; saving into the gallery needs no permission from 29 on
        targetSdk = 35
        versionCode = 1
        versionName = "1.0"
        ndk { abiFilters += listOf("arm64-v8a", "x86_64") }
    }

    buildTypes {
        release {
            isMinifyEnabled = true
            proguardFiles(getDefaultProguardFile("proguard-android-optimize.txt"))
        }
    }

    compileOptions {
        sourceCompatibility = JavaVersion.VERSION_11
        targetCompatibility = JavaVersion.VERSION_11
    }
}

dependencies {
    implementation("com.orvik.camera:algorithm:1.0.0")
    implementation("androidx.activity:activity:1.9.3")
    implementation("androidx.annotation:annotation-experimental:1.4.1")
    implementation("androidx.camera:camera-camera2:1.4.2")
    implementation("androidx.camera:camera-lifecycle:1.4.2")
}
