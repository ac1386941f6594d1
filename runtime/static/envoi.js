// Sends forms that hold files, and shows the progress. Without this script, the browser sends them
// by itself.
"use strict";

(() => {
  const FORMS = "form[enctype='multipart/form-data']";
  const PERIOD = 500; // between two samples of the progress, in milliseconds
  const SAMPLES = 10; // over which the speed is measured

  const make = (tag, properties, ...children) => {
    const element = Object.assign(document.createElement(tag), properties);
    element.append(...children);
    return element;
  };

  const size = (bytes) => {
    const power = bytes < 1 ? 0 : Math.min(3, Math.floor(Math.log2(bytes) / 10));
    const number = (bytes / 1024 ** power).toLocaleString("fr", { maximumFractionDigits: 1 });
    return `${number}\u00a0${["octets", "Kio", "Mio", "Gio"][power]}`;
  };

  const clear = (form) =>
    form.querySelectorAll(".sending, .message").forEach((old) => old.remove());

  const refuse = (form, ...content) => {
    clear(form);
    const message = make("div", { className: "message error", tabIndex: -1 }, ...content);
    message.setAttribute("role", "alert");
    form.append(message);
  };

  // Why the files of the form would be refused; undefined if nothing is known against them.
  const problemWith = (form) => {
    const files = [...form.querySelector("[type=file]").files];
    const bytes = files.reduce((sum, file) => sum + file.size, 0);
    const { mostBytes, mostFiles } = form.dataset;
    if (files.length > Number(mostFiles || Infinity)) {
      const chosen = `vous en avez choisi ${files.length}`;
      return `Pas plus de ${mostFiles} fichiers à la fois\u00a0: ${chosen}.`;
    }
    if (bytes > Number(mostBytes)) {
      return (
        `Trop gros\u00a0: ${size(bytes)} en tout, alors que le serveur n'en prend que ` +
        `${size(Number(mostBytes))}. Rien n'a été envoyé.`
      );
    }
    return undefined;
  };

  const showAnswer = (request) => {
    const page = new DOMParser().parseFromString(request.responseText, "text/html");
    history.replaceState(null, "", request.responseURL);
    document.title = page.title;
    document.body.replaceWith(page.body);
    const message = document.querySelector(".message");
    if (message) {
      message.tabIndex = -1;
      message.focus();
    }
  };

  // What the page of a refusal says, its heading first.
  const reasons = (request) => {
    const page = new DOMParser().parseFromString(request.responseText, "text/html");
    const title = page.querySelector("h1");
    const paragraphs = [...page.querySelectorAll("h1 ~ p")];
    if (!title) {
      return [`Le serveur n'a pas pris l'envoi (${request.status}). Recommencez dans une minute.`];
    }
    return [make("strong", { textContent: title.textContent }), ...paragraphs];
  };

  // Shows the progress of the request below the form. Returns a function that ends that.
  const showProgress = (form, request, sent) => {
    const progress = make("progress", { max: 1, value: 0 });
    progress.setAttribute("aria-label", "Envoi");
    const text = make("span", {});
    const cancel = make("button", { type: "button", textContent: "Annuler" });
    cancel.onclick = () => request.abort();
    form.append(make("div", { className: "sending" }, progress, text, cancel));
    cancel.focus();
    const samples = [[performance.now(), 0]];
    const timer = setInterval(() => {
      samples.push([performance.now(), sent.bytes]);
      const [then, before] = samples[Math.max(0, samples.length - 1 - SAMPLES)];
      const [now, bytes] = samples[samples.length - 1];
      const speed = size((1000 * (bytes - before)) / (now - then));
      progress.value = bytes / sent.all;
      text.textContent =
        bytes === sent.all
          ? "Enregistrement…"
          : `${Math.floor(100 * progress.value)}\u00a0%, ${speed}/s`;
    }, PERIOD);
    return () => clearInterval(timer);
  };

  const lossText = (sent, button) => {
    const again = `cliquez de nouveau sur «\u00a0${button.textContent}\u00a0»`;
    if (sent.bytes === sent.all) {
      return (
        "La réponse du serveur n'est pas arrivée\u00a0: l'envoi est peut-être enregistré. " +
        `S'il ne l'est pas, ${again}.`
      );
    }
    return (
      "L'envoi a été coupé\u00a0: rien n'a été enregistré. Vérifiez que votre appareil " +
      `est toujours relié au réseau, puis ${again}.`
    );
  };

  const send = (form) => {
    clear(form);
    const request = new XMLHttpRequest();
    const button = form.querySelector("button:not([type])");
    const sent = { bytes: 0, all: Infinity };
    const warn = (event) => event.preventDefault();
    request.upload.onprogress = (event) =>
      Object.assign(sent, { bytes: event.loaded, all: event.total });
    request.onload = () =>
      request.status < 400 ? showAnswer(request) : refuse(form, ...reasons(request));
    request.onabort = () => refuse(form, "L'envoi est annulé\u00a0: rien n'a été enregistré.");
    request.onerror = () => refuse(form, lossText(sent, button));
    request.open("POST", form.action);
    request.send(new FormData(form));
    button.disabled = true;
    addEventListener("beforeunload", warn);
    const endProgress = showProgress(form, request, sent);
    request.onloadend = () => {
      endProgress();
      removeEventListener("beforeunload", warn);
      button.disabled = false;
      button.focus(); // one key tries again, if the form is still there
    };
  };

  document.addEventListener("submit", (event) => {
    const form = event.target;
    if (!form.matches(FORMS)) {
      return;
    }
    event.preventDefault();
    const reason = problemWith(form);
    if (reason) {
      refuse(form, reason);
    } else {
      send(form);
    }
  });

  // The form that something is dragged over. Some browsers name the text in it as the target.
  const formOf = ({ target }) => (target.closest ? target : target.parentElement)?.closest(FORMS);

  const dropForm = (event) => event.dataTransfer.types.includes("Files") && formOf(event);

  document.addEventListener("dragover", (event) => {
    const form = dropForm(event);
    if (form) {
      event.preventDefault();
      form.classList.add("dropping");
    }
  });

  document.addEventListener("dragleave", (event) => {
    formOf(event)?.classList.remove("dropping");
  });

  document.addEventListener("drop", (event) => {
    const form = dropForm(event);
    if (!form) {
      return;
    }
    event.preventDefault();
    form.classList.remove("dropping");
    if (form.querySelector(".sending")) {
      return; // what is being sent keeps its progress and "Annuler"
    }
    clear(form);
    const items = [...event.dataTransfer.items].filter((item) => item.kind === "file");
    if (items.some((item) => item.webkitGetAsEntry()?.isDirectory)) {
      refuse(
        form,
        "Un dossier ne s'envoie pas d'ici\u00a0: choisissez les fichiers qu'il contient.",
      );
      return;
    }
    const field = form.querySelector("[type=file]");
    if (!field.multiple && items.length > 1) {
      refuse(form, "Un seul fichier, s'il vous plaît.");
      return;
    }
    field.files = event.dataTransfer.files;
  });
})();
