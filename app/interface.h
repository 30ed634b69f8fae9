#pragma once

class QQmlApplicationEngine;
class VeskApp;

/**
 * Gives the application its fonts and its network manager, the views their classes, and loads the root
 * document; a document that fails to load ends the event loop with -1.
 */
void loadInterface(VeskApp &app, QQmlApplicationEngine &engine);
